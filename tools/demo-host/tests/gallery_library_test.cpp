#include <dlfcn.h>
#include <gtest/gtest.h>

#include "gallery_library.h"

namespace marrowfin::demo {
namespace {

TEST(GalleryLibrary, LoadsEveryExportOfAWholeLibrary) {
    GalleryLibrary library;
    ASSERT_TRUE(library.Load(QStringLiteral(FAKE_GALLERY_PATH))) << library.error().toStdString();
    EXPECT_TRUE(library.error().isEmpty());
    EXPECT_TRUE(library.missing().isEmpty());
    const GalleryExports& e = library.exports();
    // The pointers are the library's own: calls reach its code.
    void* handle = dlopen(FAKE_GALLERY_PATH, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(handle, nullptr);
    auto calls = reinterpret_cast<int (*)()>(dlsym(handle, "FakeGalleryCalls"));
    ASSERT_NE(calls, nullptr);
    const int before = calls();
    e.FirstSynchro();
    e.show();
    e.ShowGallery(u"\\a", u"");
    e.CloseGallery();
    EXPECT_EQ(calls(), before + 4);
    EXPECT_EQ(e.GetGallery(), 4242u);
    EXPECT_EQ(e.MarrowfinWindowOf(nullptr), 7u);
    EXPECT_EQ(e.MarrowfinSendCopyData(1, 411, u"x"), 1);
    EXPECT_NE(e.SearchBrindleRes, nullptr);
    EXPECT_NE(e.ShowBoutiqueGallery, nullptr);
    dlclose(handle);
}

TEST(GalleryLibrary, NamesEveryMissingExportAndKeepsNoneOfThem) {
    GalleryLibrary library;
    EXPECT_FALSE(library.Load(QStringLiteral(FAKE_PARTIAL_PATH)));
    // The partial library has FirstSynchro, show and GetGallery only.
    EXPECT_EQ(library.missing().size(), 14);
    for (const char* name : {"ShowGallery", "HideGallery", "CloseGallery", "GaDllPretanslateMsg", "IsDLLHwnd",
                             "SearchBrindleRes", "ResetClass", "IsBlkBoutique", "ShowBoutiqueGallery",
                             "AddMoreGallery", "MarrowfinWindowOf", "MarrowfinSetMainWindow",
                             "MarrowfinSendPanelControl", "MarrowfinSendCopyData"}) {
        EXPECT_TRUE(library.missing().contains(QString::fromLatin1(name))) << name;
        EXPECT_TRUE(library.error().contains(QString::fromLatin1(name))) << name;
    }
    EXPECT_FALSE(library.missing().contains(QStringLiteral("show")));
    EXPECT_TRUE(library.error().contains(QStringLiteral(FAKE_PARTIAL_PATH)));
    // Half a table is no table: even the exports that were found are not handed out.
    EXPECT_EQ(library.exports().show, nullptr);
    EXPECT_EQ(library.exports().FirstSynchro, nullptr);

    // A later good load replaces the failure completely.
    ASSERT_TRUE(library.Load(QStringLiteral(FAKE_GALLERY_PATH)));
    EXPECT_TRUE(library.missing().isEmpty());
    EXPECT_TRUE(library.error().isEmpty());
    EXPECT_NE(library.exports().show, nullptr);
}

TEST(GalleryLibrary, TellsWhyAFileCannotBeLoaded) {
    GalleryLibrary library;
    EXPECT_FALSE(library.Load(QString()));
    EXPECT_FALSE(library.error().isEmpty());

    EXPECT_FALSE(library.Load(QStringLiteral("/nonexistent/libmarrowfin.so")));
    EXPECT_TRUE(library.error().startsWith(QStringLiteral("cannot load /nonexistent/libmarrowfin.so: ")))
        << library.error().toStdString();
    EXPECT_EQ(library.exports().GetGallery, nullptr);

    // A file that is no shared object at all.
    EXPECT_FALSE(library.Load(QStringLiteral(MARROWFIN_DEMO_TEST_SOURCE)));
    EXPECT_TRUE(library.error().startsWith(QStringLiteral("cannot load "))) << library.error().toStdString();
}

}  // namespace
}  // namespace marrowfin::demo
