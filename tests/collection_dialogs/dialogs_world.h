#pragma once
// A signed-in user of the stand-in service with a panel to open dialogs over,
// and the service's side of the collection read back by name.

#include <gtest/gtest.h>

#include <QImage>
#include <QWidget>
#include <memory>
#include <string>
#include <vector>

#include "collection/collection_folders.h"
#include "support/live_service.h"
#include "support/temp_home.h"

namespace marrowfin {
class CCollectionDialogFrame;
class CSkinButton;
}  // namespace marrowfin

namespace marrowfin::test {

struct DialogWorld : ::testing::Test {
    TempHome home;
    std::unique_ptr<LiveService> service;
    QWidget panel;
    int64_t user = 0;
    std::u16string token;
    std::string mirror;  // the user's local collection folder
    QByteArray oldTmp;
    bool hadTmp = false;

    void SetUp() override;
    void TearDown() override;

    // Requests that reached /gallery/<call>.
    long Count(const std::string& call);
    // Folder names on the service, in its order; blocks of one by file name.
    std::vector<std::string> Folders();
    std::vector<std::string> Blocks(const std::string& folder);
    // Made on the service through the library's own calls.
    void MakeFolders(const std::vector<std::u16string>& names);
    void Collect(const std::u16string& folder, const std::string& fileName);
    // The panel's map as the collection page would have read it, blocks included.
    CollectionFolderMap FolderMap();
    // A drawing's bytes at `path` (made with its folders).
    std::string WriteBlock(const std::string& path);
    void Fault(const std::string& call, const std::string& pairs);
};

// The button of a skin control id inside `window`.
CSkinButton* ButtonOf(QWidget* window, int id);
// Presses the button with real input.
void Press(QWidget* window, int id);
// Waits for the tip over `dialog`, checks its first line, presses its first
// (1) or second (2) button.
::testing::AssertionResult AnswerTip(CCollectionDialogFrame* dialog, const QString& firstLine, int button);
// A wide picture of a door symbol, to be cut to its middle square.
QImage SamplePreview();

}  // namespace marrowfin::test
