#pragma once
// A fresh home per test and a store whose root lies in its documents folder.

#include <gtest/gtest.h>

#include <string>

#include "platform/files.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "support/temp_home.h"
#include "support/tree_dump.h"
#include "support/test_paths.h"

namespace marrowfin::test {

class StoreFixture : public ::testing::Test {
protected:
    void SetUp() override {
        rootPath = Utf8ToUtf16(home.documentsDir()) + u"/Orsolen";
        ASSERT_TRUE(CreateDirectories(rootPath));
        store.root = new GalleryNode(u"", rootPath, kRootName, kKindDir, false, false, 0);
    }
    void TearDown() override { SubtreeDeleter()(std::exchange(store.root, nullptr)); }

    GalleryNode* AddGallery(const std::u16string& name, bool boutique = false) {
        auto* g = new GalleryNode(kRootName, rootPath + u"/" + name, name, kKindDir, false, boutique, 0);
        AddChild(store.root, g, false);
        return g;
    }
    static GalleryNode* AddClass(GalleryNode* gallery, const std::u16string& name, int32_t version, const std::u16string& base) {
        auto* c = new GalleryNode(gallery->name, gallery->Path() + u"/" + name, name, kKindDir, false, false, 0);
        c->version = version;
        c->remoteBase = base;
        AddChild(gallery, c, false);
        return c;
    }
    // A block as read in bulk: its path, owner and URL follow from the class.
    static GalleryNode* AddBlock(GalleryNode* cls, const std::u16string& fn, int32_t size, bool hidden) {
        GalleryNode* b = NewBlock(fn, hidden, false, size);
        AddChild(cls, b, false);
        return b;
    }
    static std::string DataFile(const std::string& name) { return ReadBytes(SourceDir() + "/tests/store/data/" + name); }
    // Writes a stand-in block file so that the list filters see it.
    static void Touch(const std::u16string& path) {
        CreateDirectories(path.substr(0, path.find_last_of(u'/')));
        WriteBytes(Utf16ToUtf8(path), "x");
    }

    TempHome home;
    std::u16string rootPath;
    GalleryStore store;
};

}  // namespace marrowfin::test
