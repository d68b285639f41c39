// The insertion road of the demo host's main window: a block the panel asks
// to insert waits for a click and is placed on the sheet's grid, over an
// export table that only answers whether a block is a boutique one.
#include <gtest/gtest.h>

#include <QListWidget>
#include <QtTest/QTest>

#include "drawing_sheet.h"
#include "host_window.h"
#include "support/test_paths.h"

namespace marrowfin::demo {
namespace {

QString Dwg(const char* name) {
    return QString::fromStdString(marrowfin::test::SharedDir()) + QStringLiteral("/testdata/dwg/") + QString::fromLatin1(name);
}

TEST(HostWindow, AnInsertedBlockWaitsForAClickAndIsPlacedOnTheGrid) {
    GalleryExports exports;
    exports.IsBlkBoutique = [](const char16_t* path) -> uint8_t {
        return QString::fromStdU16String(path).endsWith(QStringLiteral("png_ac1027.dwg"));
    };
    HostWindow window(exports, QStringList{QStringLiteral("建筑门窗")});
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    // An insertion as the panel posts it, owning its path.
    auto insert = [&window](uintptr_t code, const QString& path) {
        auto text = path.isNull() ? nullptr : std::make_unique<std::u16string>(path.toStdU16String());
        QCoreApplication::postEvent(&window, new MarrowfinHostEvent(MARROWFIN_GALLERY_HOST_REQUEST, code, 0, std::move(text)));
        QCoreApplication::processEvents();
    };
    DrawingSheet* sheet = window.sheet();
    auto click = [sheet](QPoint at, Qt::MouseButton button = Qt::LeftButton) { QTest::mouseClick(sheet, button, {}, at); };
    // (A block of the real library waiting and placed by a click: the demo tour.)
    insert(MARROWFIN_REQUEST_INSERT_YL, Dwg("bmp8_ac1015.dwg"));
    click(QPoint(29, 31));  // snapped: 29 -> 20, 31 -> 40
    ASSERT_EQ(sheet->blocks().size(), 1u);
    EXPECT_EQ(sheet->blocks()[0].at, QPoint(20, 40));
    click(QPoint(200, 200));  // nothing waits
    EXPECT_EQ(sheet->blocks().size(), 1u);

    // A right click or Escape gives a waiting block up; a new insertion replaces the waiting one.
    insert(MARROWFIN_REQUEST_INSERT, Dwg("no_preview_ac1009.dwg"));
    click(QPoint(100, 100), Qt::RightButton);
    EXPECT_FALSE(sheet->HasPending());
    insert(MARROWFIN_REQUEST_INSERT_PMMC, Dwg("no_preview_ac1009.dwg"));
    sheet->setFocus();
    QTest::keyClick(sheet, Qt::Key_Escape);
    EXPECT_FALSE(sheet->HasPending());
    insert(MARROWFIN_REQUEST_INSERT_PMMC, Dwg("png_ac1027.dwg"));
    insert(MARROWFIN_REQUEST_INSERT, Dwg("no_preview_ac1009.dwg"));
    click(QPoint(300, 60));
    // A drawing without a preview is placed all the same, as a labelled box;
    // a boutique block is marked (asked by its path when placed).
    insert(MARROWFIN_REQUEST_INSERT_PMMC, Dwg("png_ac1027.dwg"));
    click(QPoint(500, 300));
    ASSERT_EQ(sheet->blocks().size(), 3u);
    EXPECT_TRUE(sheet->blocks()[1].preview.isNull() && !sheet->blocks()[2].preview.isNull());
    QStringList listed;
    for (int i = 0; i < window.insertedList()->count(); ++i) listed << window.insertedList()->item(i)->text();
    EXPECT_EQ(listed, (QStringList{"bmp8_ac1015  [YL]", "no_preview_ac1009", "png_ac1027  [PMMC]  ★"}));
    // An insertion without a path is told, not placed.
    insert(MARROWFIN_REQUEST_INSERT, QString());
    EXPECT_TRUE(!sheet->HasPending() && window.lastStatus().contains(QStringLiteral("without a path")));
}

}  // namespace
}  // namespace marrowfin::demo
