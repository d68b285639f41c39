#pragma once
// One line per node, for comparing whole gallery trees: a fault anywhere in a
// node's stored or derived fields shows as a changed line.

#include <string>

#include "platform/text.h"
#include "store/gallery_node.h"

namespace marrowfin::test {

inline std::u16string DumpTree(const GalleryNode* n, int depth = 0) {
    std::u16string s(static_cast<size_t>(depth) * 2, u' ');
    s += std::u16string(n->OwnerName()) + u"|" + n->name + u"|" + n->Path() + u"|" + (n->kind == NodeKind::File ? kKindFile : kKindDir) +
         u"|" + DownloadUrl(*n) + u"|" + Utf8ToUtf16(std::to_string(n->version)) + u"|" + Utf8ToUtf16(std::to_string(n->size)) +
         (n->hidden ? u"|h" : u"|-") + (n->boutique ? u"|b" : u"|-") + u"\n";
    for (auto* c : n->fileChildren) s += c ? DumpTree(c, depth + 1) : u"";
    for (auto* c : n->dirChildren) s += c ? DumpTree(c, depth + 1) : u"";
    return s;
}

// `dump` with every `root` in it written as "R", so that an expected dump reads a node to a line.
inline std::u16string RootAsR(std::u16string dump, const std::u16string& root) {
    for (size_t at = 0; (at = dump.find(root, at)) != std::u16string::npos; ++at) dump.replace(at, root.size(), u"R");
    return dump;
}

// The dumps of a node's dir children (the galleries of a root, the classes of a gallery).
inline std::u16string DumpChildren(const GalleryNode* n, int depth = 0) {
    std::u16string s;
    for (auto* c : n->dirChildren) s += DumpTree(c, depth);
    return s;
}

}  // namespace marrowfin::test
