// The loader of libmarrowfin.so, on real shared objects: one with every
// export, one that lacks most of them, and files that are none.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include "gallery_library.h"

namespace marrowfin::demo {
namespace {

TEST(GalleryLibrary, HandsOutAWholeTableOrNoneAndSaysWhy) {
    GalleryLibrary library;
    EXPECT_FALSE(library.Load(QStringLiteral(FAKE_PARTIAL_PATH)));
    // The partial library has FirstSynchro, show and GetGallery only.
    EXPECT_EQ(library.missing().size(), 14);
    for (const char* name : {"ShowGallery", "HideGallery", "CloseGallery", "GaDllPretanslateMsg", "IsDLLHwnd",
                             "SearchBrindleRes", "ResetClass", "IsBlkBoutique", "ShowBoutiqueGallery",
                             "AddMoreGallery", "MarrowfinWindowOf", "MarrowfinSetMainWindow",
                             "MarrowfinSendPanelControl", "MarrowfinSendCopyData"})
        EXPECT_TRUE(library.missing().contains(QString::fromLatin1(name)) && library.error().contains(QString::fromLatin1(name))) << name;
    EXPECT_TRUE(library.error().contains(QStringLiteral(FAKE_PARTIAL_PATH)));
    EXPECT_EQ(library.exports().show, nullptr);  // half a table is no table
    EXPECT_EQ(library.exports().FirstSynchro, nullptr);

    // A later good load replaces the failure, and its pointers reach the library's code.
    ASSERT_TRUE(library.Load(QStringLiteral(FAKE_GALLERY_PATH))) << library.error().toStdString();
    EXPECT_TRUE(library.missing().isEmpty());
    EXPECT_TRUE(library.error().isEmpty());
    void* handle = dlopen(FAKE_GALLERY_PATH, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(handle, nullptr);
    auto calls = reinterpret_cast<int (*)()>(dlsym(handle, "FakeGalleryCalls"));
    const int before = calls();
    library.exports().show();
    library.exports().CloseGallery();
    EXPECT_EQ(calls(), before + 2);
    EXPECT_EQ(library.exports().GetGallery(), 4242u);
    EXPECT_EQ(library.exports().MarrowfinSendCopyData(1, 411, u"x"), 1);
    dlclose(handle);

    // No path, no file, a file that is no shared object: refused, and nothing is kept.
    for (const QString& path : {QString(), QStringLiteral("/nonexistent/libmarrowfin.so"), QStringLiteral(MARROWFIN_DEMO_TEST_SOURCE)}) {
        EXPECT_FALSE(library.Load(path)) << path.toStdString();
        EXPECT_FALSE(library.error().isEmpty());
        EXPECT_EQ(library.exports().GetGallery, nullptr);
    }
    EXPECT_TRUE(library.error().startsWith(QStringLiteral("cannot load "))) << library.error().toStdString();
}

}  // namespace
}  // namespace marrowfin::demo
