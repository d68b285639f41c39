// The new-folder and rename dialogs driven by typing: what the service holds
// afterwards, the values handed back to the panel, and every refusal, which
// keeps the dialog open with its line and sends nothing it must not.

#include <QApplication>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QTest>

#include "collection/name_rule.h"
#include "collection_dialogs/modify_folder_dlg.h"
#include "collection_dialogs/new_folder_dlg.h"
#include "dialogs_world.h"
#include "platform/text.h"
#include "support/event_pump.h"
#include "support/widget_input.h"

namespace marrowfin::test {
namespace {

using Names = std::vector<std::string>;

struct NameDialogs : DialogWorld {
    int result = -1;

    template <class Dialog>
    Dialog* Opened(Dialog* dialog) {
        result = -1;
        QObject::connect(dialog, &QDialog::finished, [this](int r) { result = r; });
        dialog->Open();
        return dialog;
    }
    // Types `text` over the edit's content, as an input method commits it,
    // and presses Enter in it.
    void Enter(CNameDlg* dialog, const QString& text) {
        dialog->NameEdit()->selectAll();
        QInputMethodEvent typed;
        typed.setCommitString(text);
        QApplication::sendEvent(dialog->NameEdit(), &typed);
        Key(dialog->NameEdit(), Qt::Key_Return);
    }
    // Waits until the request (if any) is answered.
    void Settle(CNameDlg* dialog) {
        EXPECT_TRUE(PumpUntil([dialog] { return !dialog->Waiting(); }));
        Pump(20);
    }
};

TEST_F(NameDialogs, NewFolderRefusalsKeepTheDialogAndItsLine) {
    MakeFolders({u"收藏夹1", u"收藏夹3"});
    CNewFolderDlg* dialog = Opened(new CNewFolderDlg(&panel, token, W(mirror), FolderMap()));
    EXPECT_EQ(dialog->NameEdit()->text(), "收藏夹2");

    // Refused on the spot, with no request: a plus, a full stop, each listed mark.
    for (const char* bad : {"a+b", "v1.2", "图……块", "x——y", "a；b", "a、b", "c|d"}) {
        Enter(dialog, bad);
        EXPECT_EQ(dialog->m_error, CNameDlg::BadCharacters) << bad;
    }
    EXPECT_EQ(Count("favorite"), 2);
    // Typing clears the line; blanks alone do nothing.
    QTest::keyClick(dialog->NameEdit(), Qt::Key_Backspace);
    EXPECT_EQ(dialog->m_error, CNameDlg::NoError);
    Enter(dialog, "   ");
    EXPECT_EQ(Count("favorite"), 2);
    EXPECT_EQ(result, -1);

    // The service's refusals: a taken name; a lost request says nothing.
    Enter(dialog, "收藏夹3 ");
    Settle(dialog);
    EXPECT_EQ(dialog->m_error, CNameDlg::NameTaken);
    Fault("favorite", "drop=1&count=1");
    Enter(dialog, "门窗");
    Settle(dialog);
    EXPECT_EQ(dialog->m_error, CNameDlg::NoError);
    EXPECT_EQ(result, -1);
    // Esc does not end it.
    Key(dialog->NameEdit(), Qt::Key_Escape);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(Folders(), (Names{"收藏夹1", "收藏夹3"}));

    // A slow service takes one request however often Enter is pressed.
    Fault("favorite", "latency=500");
    const long before = Count("favorite");
    Enter(dialog, " 门窗 ");
    Key(dialog->NameEdit(), Qt::Key_Return);
    Press(dialog, CNameDlg::IdOk);
    Settle(dialog);
    ASSERT_TRUE(PumpUntil([this] { return result != -1; }));
    EXPECT_EQ(Count("favorite"), before + 1);
    EXPECT_EQ(result, QDialog::Accepted);
    EXPECT_EQ(dialog->m_name, u"门窗");
    ASSERT_EQ(dialog->m_folders.size(), 3u);
    EXPECT_EQ(dialog->m_folders[2].name, u"门窗");
    EXPECT_EQ(dialog->m_folders[2].path, W(mirror + "/门窗"));

    // Entered in the panel's map, a folder already there starts over empty.
    CollectionFolderMap map = FolderMap();
    map.begin()->second.blocks.push_back(CollectedBlock{u"9", u"x.dwg", u"", u"", u""});
    dialog->EnterInto(map);
    EXPECT_EQ(map.size(), 3u);
    EXPECT_TRUE(map.begin()->second.blocks.empty());
}

TEST_F(NameDialogs, TheNineteenthFolderIsRefusedByTheService) {
    std::vector<std::u16string> names;
    for (int i = 1; i <= 18; ++i) names.push_back(u"夹" + W(std::to_string(i)));
    MakeFolders(names);
    CNewFolderDlg* dialog = Opened(new CNewFolderDlg(&panel, token, W(mirror), FolderMap()));
    EXPECT_EQ(dialog->NameEdit()->text(), "收藏夹1");
    Enter(dialog, "第十九");
    Settle(dialog);
    EXPECT_EQ(dialog->m_error, CNameDlg::ServiceRefused);
    EXPECT_EQ(result, -1);
    EXPECT_EQ(Folders().size(), 18u);
}

TEST_F(NameDialogs, RenamesAFolder) {
    MakeFolders({u"门", u"窗"});
    CModifyFolderDlg* dialog =
        Opened(new CModifyFolderDlg(&panel, token, FolderMap(), W(mirror), u"门", CModifyFolderDlg::RenameFolderMode));
    EXPECT_EQ(dialog->NameEdit()->text(), "门");
    Enter(dialog, "窗");
    Settle(dialog);
    EXPECT_EQ(dialog->m_error, CNameDlg::NameTaken);
    Enter(dialog, "木门");
    ASSERT_TRUE(PumpUntil([this] { return result != -1; }));
    EXPECT_EQ(result, QDialog::Accepted);
    EXPECT_EQ(Folders(), (Names{"木门", "窗"}));

    // The unchanged name ends it with no request.
    const long before = Count("favorite");
    dialog = Opened(new CModifyFolderDlg(&panel, token, FolderMap(), W(mirror), u"窗", CModifyFolderDlg::RenameFolderMode));
    Enter(dialog, " 窗");
    EXPECT_EQ(result, QDialog::Rejected);
    EXPECT_EQ(Count("favorite"), before);
}

TEST_F(NameDialogs, RenamesABlockAndHandsBackItsEntry) {
    MakeFolders({u"门"});
    Collect(u"门", "a.dwg");
    Collect(u"门", "b.dwg");
    CollectionFolderMap map = FolderMap();
    auto open = [&] {
        return Opened(new CModifyFolderDlg(&panel, token, map, W(mirror + "/门"), u"a.dwg",
                                           CModifyFolderDlg::RenameBlockMode, false));
    };
    CModifyFolderDlg* dialog = open();
    EXPECT_EQ(dialog->NameEdit()->text(), "a");
    // Another block's name is taken; a full stop never leaves.
    Enter(dialog, "b");
    Settle(dialog);
    EXPECT_EQ(dialog->m_error, CNameDlg::NameTaken);
    Enter(dialog, "a.v2");
    EXPECT_EQ(dialog->m_error, CNameDlg::BadCharacters);
    EXPECT_EQ(Count("cdwgrn"), 1);
    // A name without extension goes with ".dwg" behind it.
    Enter(dialog, "门 甲");
    ASSERT_TRUE(PumpUntil([this] { return result != -1; }));
    EXPECT_EQ(result, QDialog::Accepted);
    EXPECT_EQ(dialog->m_name, u"门 甲.dwg");
    EXPECT_EQ(Blocks("门"), (Names{"门 甲.dwg", "b.dwg"}));
    ASSERT_EQ(dialog->m_renamedBlocks.size(), 1u);
    EXPECT_EQ(dialog->m_renamedBlocks[0].path, W(mirror + "/门/门 甲.dwg"));
    dialog->ApplyTo(map);
    std::vector<std::u16string> entries;
    for (const CollectedBlock& block : map.begin()->second.blocks) entries.push_back(block.filename);
    EXPECT_EQ(entries, (std::vector<std::u16string>{u"b.dwg", u"门 甲.dwg"}));

    // The old name unchanged: no request.
    dialog = open();
    Enter(dialog, "a");
    EXPECT_EQ(result, QDialog::Rejected);
    EXPECT_EQ(Count("cdwgrn"), 2);
}

TEST(NameRule, RefusesListedCharactersAndDoubledMarksOnly) {
    for (std::u16string_view bad : {u"a?b", u"a\\b", u"a/b", u"a*b", u"a\"b", u"a<b", u"a>b", u"a%b", u"a:b",
                                    u"a;b", u"a&b", u"a.b", u"a。b", u"a……", u"——"})
        EXPECT_FALSE(NamePassesRule(bad, NameUse::CollectedBlock)) << U8(bad);
    for (std::u16string_view good : {u"门窗 1", u"a…b", u"a—b", u"a+b", u"Title-Blocks_2"})
        EXPECT_TRUE(NamePassesRule(good, NameUse::CollectedBlock)) << U8(good);
    EXPECT_FALSE(NamePassesRule(u"a+b", NameUse::TypedName));
}

}  // namespace
}  // namespace marrowfin::test
