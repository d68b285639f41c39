#pragma once
// The two documents the collection calls answer with. The folder list
// (`root` > `favorites` > `dwg`) comes from get_u_f, get_u_collect and a
// folder's creation; the block list (`root` > `dwg`) from a folder's blocks
// and a block's renaming. Every field is an attribute; a missing one reads
// as an empty string.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace marrowfin {

// What a reply text turned out to be. An empty text is not a document.
enum class DocumentShape {
    Unparsable,  // empty, a word, or ill-formed
    NoRoot,  // well-formed, but without `root`
    Root,  // the lists below were read from `root`
};

// A block as the lists name it. In the folder list a block has no id but a
// size and a boutique mark; in the block list it has an id and neither.
struct ListedBlock {
    std::u16string id;  // dwg_id
    std::u16string filename;  // filename
    std::u16string url;  // dwg_url
    std::u16string info;  // dwg_info: the folder the block lies in
    int32_t size = 0;  // size
    bool boutique = false;  // gv="1"
};

struct ListedFolder {
    std::u16string id;  // favorites_id
    std::u16string name;  // favorites_name
    std::vector<ListedBlock> blocks;  // only when the blocks were asked for
};

struct FolderListDocument {
    DocumentShape shape = DocumentShape::Unparsable;
    std::vector<ListedFolder> folders;  // in the service's order
};

struct BlockListDocument {
    DocumentShape shape = DocumentShape::Unparsable;
    std::vector<ListedBlock> blocks;  // in the service's order
};

FolderListDocument ParseFolderList(std::u16string_view text);
BlockListDocument ParseBlockList(std::u16string_view text);

}  // namespace marrowfin
