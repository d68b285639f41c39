#pragma once
// A fresh home per test and a store whose root lies in its documents folder.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/files.h"
#include "platform/text.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "support/temp_home.h"
#include "support/test_paths.h"

namespace marrowfin::test {

class StoreFixture : public ::testing::Test {
protected:
    void SetUp() override {
        home = std::make_unique<TempHome>();
        rootPath = W(home->documentsDir()) + u"/Orsolen";
        ASSERT_TRUE(CreateDirectories(rootPath));
        store.root = new GalleryNode(u"", rootPath, kRootName, kKindDir, false, false, 0);
    }
    void TearDown() override {
        SubtreeDeleter()(store.root);
        store.root = nullptr;
        home.reset();
    }

    GalleryNode* AddGallery(const std::u16string& name, bool boutique = false) {
        auto* g = new GalleryNode(kRootName, rootPath + u"/" + name, name, kKindDir, false, boutique, 0);
        AddChild(store.root, g, false);
        return g;
    }
    static GalleryNode* AddClass(GalleryNode* gallery, const std::u16string& name, int32_t version,
                                 const std::u16string& base) {
        auto* c = new GalleryNode(gallery->name, gallery->Path() + u"/" + name, name, kKindDir, false, false, 0);
        c->version = version;
        c->remoteBase = base;
        AddChild(gallery, c, false);
        return c;
    }
    static GalleryNode* AddBlock(GalleryNode* cls, const std::u16string& fn, int32_t size, bool hidden) {
        auto* b = new GalleryNode(cls->name, cls->Path() + u"/" + fn, fn, kKindFile, hidden, false, size);
        b->remoteBase = cls->remoteBase + u"/" + fn;
        AddChild(cls, b, false);
        return b;
    }
    std::string DataFile(const std::string& name) const {
        return ReadBytes(SourceDir() + "/tests/store/data/" + name);
    }
    // Writes an empty stand-in block file so that the list filters see it.
    static void Touch(const std::u16string& path) {
        const size_t slash = path.find_last_of(u'/');
        CreateDirectories(path.substr(0, slash));
        WriteBytes(U8(path), "x");
    }

    std::unique_ptr<TempHome> home;
    std::u16string rootPath;
    GalleryStore store;
};

}  // namespace marrowfin::test
