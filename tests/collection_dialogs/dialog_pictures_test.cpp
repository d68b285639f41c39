// The faces of the five dialogs at two rates, the folder list open, and the
// share dialog's success, against reference pictures.

#include <QAbstractItemView>

#include "collection_dialogs/collectiondlg.h"
#include "collection_dialogs/modify_folder_dlg.h"
#include "collection_dialogs/move_collect_blk_dlg.h"
#include "collection_dialogs/new_folder_dlg.h"
#include "collection_dialogs/share_dwg_block_dlg.h"
#include "collection_dialogs/share_sel_combo_box.h"
#include "dialogs_world.h"
#include "support/reference_picture.h"

namespace marrowfin::test {
namespace {

struct DialogPictures : DialogWorld {
    ::testing::AssertionResult Matches(QWidget* window, const std::string& name) {
        Pump(30);
        return MatchesReference(window->grab().toImage(), "collection_dialogs", name);
    }
};

TEST_F(DialogPictures, FacesAtTwoRates) {
    MakeFolders({u"收藏夹1", u"常用门窗"});
    Collect(u"收藏夹1", "a.dwg");
    const std::string block = WriteBlock(mirror + "/收藏夹1/a.dwg");
    for (float rate : {1.0f, 1.5f}) {
        UseRate(rate);
        const std::string suffix = rate == 1.0f ? "_rate_1.0" : "_rate_1.5";

        CCollectiondlg collect(&panel, u"Door A.DWG", Utf8ToUtf16(block), SamplePreview(), token);
        Opened(&collect);
        MoveTo(&collect, collect.FolderRect().center());
        EXPECT_TRUE(Matches(&collect, "collect" + suffix));
        if (rate == 1.0f) {
            Click(&collect, collect.FolderRect().center());
            QWidget* list = collect.FolderCombo()->view()->window();
            ASSERT_TRUE(PumpUntil([list] { return list->isVisible(); }));
            EXPECT_TRUE(Matches(list, "folder_list"));
            collect.FolderCombo()->hidePopup();
        }
        collect.reject();

        CMoveCollectBlkDlg move(&panel, u"a.dwg", Utf8ToUtf16(block), QImage(), token, FolderMap());
        Opened(&move);
        EXPECT_TRUE(Matches(&move, "move" + suffix));
        move.reject();

        CNewFolderDlg create(&panel, token, Utf8ToUtf16(mirror), FolderMap());
        Type(Opened(&create), QStringLiteral("常用门窗"));
        EXPECT_EQ(create.m_error, CNameDlg::NameTaken);
        EXPECT_TRUE(Matches(&create, "new_folder_taken" + suffix));
        create.reject();

        CModifyFolderDlg rename(&panel, token, FolderMap(), Utf8ToUtf16(mirror + "/收藏夹1"), u"a.dwg", CModifyFolderDlg::RenameBlockMode,
                                false);
        Opened(&rename);
        EXPECT_TRUE(Matches(&rename, "rename_block" + suffix));
        rename.reject();

        CShareDWGblockDlg share(&panel, token, {u"建筑门窗", u"我的收藏"});
        share.m_settleMs = 10;
        Opened(&share);
        EXPECT_TRUE(Matches(&share, "share" + suffix));
        if (rate == 1.5f) {
            Press(&share, CShareDWGblockDlg::IdShare);
            ASSERT_TRUE(PumpUntil([&] { return share.m_result == 1; }));
            MoveAway(&share);
            EXPECT_TRUE(Matches(&share, "share_done" + suffix));
        }
        share.reject();
    }
    UseRate(1.0f);
}

}  // namespace
}  // namespace marrowfin::test
