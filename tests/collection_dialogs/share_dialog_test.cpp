// The share dialog: its kind rows, the one request it sends, the bar that
// waits below 20 until the service answers, and the failure road back to a
// second try.

#include <QAbstractItemView>

#include "collection_dialogs/share_dwg_block_dlg.h"
#include "collection_dialogs/share_sel_combo_box.h"
#include "dialogs_world.h"
#include "platform/text.h"
#include "skin/progress_ctrl_owner.h"
#include "skin/skin_button.h"
#include "skin/skin_scale.h"
#include "support/event_pump.h"
#include "support/widget_input.h"
#include "request_counters.h"
#include "user_state.h"

namespace marrowfin::test {
namespace {

using Rows = std::vector<std::u16string>;

TEST(ShareKinds, RowsFollowTheRootsChildren) {
    EXPECT_EQ(ShareKindRows({u"我的收藏"}), Rows{u"其他"});
    EXPECT_EQ(ShareKindRows({u"建筑门窗", u"我的收藏"}), Rows{u"建筑门窗"});
    EXPECT_EQ(ShareKindRows({u"建筑门窗"}), (Rows{u"建筑门窗", u"其他"}));
    EXPECT_EQ(ShareKindRows({u"B", u"我的收藏", u"A"}), (Rows{u"B", u"A"}));
}

struct ShareDialog : DialogWorld {
    CShareDWGblockDlg* Open() {
        auto* dialog = new CShareDWGblockDlg(&panel, token, {u"建筑门窗", u"我的收藏", u"家具"});
        dialog->m_stepMs = 10;
        dialog->m_settleMs = 100;
        dialog->Open();
        return dialog;
    }
    int Shares() { return service->handle.users().shareCount(user); }
};

TEST_F(ShareDialog, SharesOnceWhileTheBarWaitsBelowTwenty) {
    CShareDWGblockDlg* dialog = Open();
    EXPECT_EQ(g_shareKind, u"建筑门窗");
    // Another kind is shown and remembered.
    Click(dialog, ScaleRect(77, 214, 171, 238).center());
    QAbstractItemView* list = dialog->KindCombo()->view();
    ASSERT_TRUE(PumpUntil([list] { return list->isVisible(); }));
    Click(list->viewport(), list->visualRect(list->model()->index(1, 0)).center());
    EXPECT_TRUE(PumpUntil([] { return g_shareKind == u"家具"; }));

    Fault("sharef", "latency=1200");
    CSkinButton* share = ButtonOf(dialog, CShareDWGblockDlg::IdShare);
    const QPoint at = share->mapTo(dialog, share->rect().center());
    Press(dialog, CShareDWGblockDlg::IdShare);
    EXPECT_FALSE(share->isVisible());
    Click(dialog, at);  // where the button was: nothing to press
    // Many steps pass while the service waits: the bar stops at 20 until it answers.
    int highest = 0;
    ASSERT_TRUE(PumpUntil(
        [&] {
            const int position = dialog->Progress()->GetPos();
            if (dialog->m_result == -1 && position != 95) highest = std::max(highest, position);
            return dialog->m_result != -1;
        },
        10000));
    EXPECT_EQ(highest, 20);
    EXPECT_EQ(dialog->m_result, 1);
    EXPECT_EQ(dialog->Progress()->GetPos(), 100);
    EXPECT_EQ(dialog->CancelButton()->text(), "关闭");
    EXPECT_EQ(Shares(), 1);
    EXPECT_EQ(Count("sharef"), 1);
    // The request carries the token and nothing of the kind.
    EXPECT_EQ(service->handle.counters().get("/gallery/sharef").last, "POST /gallery/sharef?usertoken=" + U8(token));
    Press(dialog, CShareDWGblockDlg::IdCancel);
    EXPECT_FALSE(dialog->isVisible());
}

TEST_F(ShareDialog, AFailureOffersASecondTry) {
    CShareDWGblockDlg* dialog = Open();
    Fault("sharef", "status=500&count=1");
    Press(dialog, CShareDWGblockDlg::IdShare);
    ASSERT_TRUE(PumpUntil([dialog] { return dialog->m_result != -1; }));
    EXPECT_EQ(dialog->m_result, 0);
    EXPECT_EQ(dialog->ShareButton()->text(), "重新分享");
    EXPECT_TRUE(dialog->ShareButton()->isVisible());
    EXPECT_EQ(dialog->CancelButton()->text(), "关闭");
    // The kind field stays closed: a click there opens nothing.
    Click(dialog, ScaleRect(77, 214, 171, 238).center());
    EXPECT_FALSE(dialog->KindCombo()->view()->isVisible());
    EXPECT_EQ(Shares(), 0);

    Press(dialog, CShareDWGblockDlg::IdShare);
    EXPECT_EQ(dialog->m_result, -1);
    ASSERT_TRUE(PumpUntil([dialog] { return dialog->m_result != -1; }));
    EXPECT_EQ(dialog->m_result, 1);
    EXPECT_EQ(Shares(), 1);
    EXPECT_EQ(Count("sharef"), 2);
}

}  // namespace
}  // namespace marrowfin::test
