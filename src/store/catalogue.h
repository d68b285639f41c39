#pragma once
// A gallery's catalogue, <root>/<gallery>/<gallery>.xdb: its classes and
// blocks, so that the tree can be rebuilt without the network. The root
// element carries a seal that ties the file to its gallery.

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace marrowfin {

struct GalleryNode;
struct GalleryStore;

// The exact bytes of a gallery's catalogue. Blocks of a stale class are left
// out, so that a read never takes an outdated list for a complete one.
std::string ComposeCatalogue(const GalleryStore& store, const GalleryNode& gallery);
// The same with the stale classes given by path: for a composer on another
// thread than the one that changes store.staleClasses.
using StaleClasses = std::map<std::u16string, int32_t>;
std::string ComposeCatalogue(const StaleClasses& staleClasses, const GalleryNode& gallery);
// Where a gallery's catalogue lies: <gallery path>/<gallery name>.xdb.
std::u16string CatalogueFile(const GalleryNode& gallery);
// Writes the catalogue of the named gallery, or of every gallery for an empty
// name, creating the gallery's folder first. Nothing without a root.
void WriteCatalogue(const GalleryStore& store, std::u16string_view galleryName);
// Appends the classes and blocks of <root>/<name>/<name>.xdb to the gallery,
// making the gallery when the tree lacks it. A missing or broken file, a
// missing root element, or a seal that does not decode to the name leaves
// the tree untouched and answers false.
bool ReadCatalogue(GalleryStore& store, std::u16string_view galleryName);
// The same below any root node, such as a worker's detached one.
bool ReadCatalogueInto(GalleryNode& root, std::u16string_view galleryName);

}  // namespace marrowfin
