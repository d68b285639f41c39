#pragma once
// Large libraries for the service, written fast: the catalogue file the
// service reads and block files that are links to one real file.

#include <string>

namespace marrowfin::bench {

// Writes library.tsv for galleries x classes x blocks into a fresh data
// folder; every block file links to one file of `blockBytes` bytes.
// Returns the data folder.
std::string WriteLinkedLibrary(int galleries, int classes, int blocks, size_t blockBytes);
std::string GalleryName(int index);

// Keeps a folder until the program ends, then removes it (a big library is
// hundreds of thousands of links). Returns the folder.
std::string KeepUntilExit(std::string dir);
// A profile and documents folder of the benchmark's own, for the rest of the run.
void UseFreshHome();

}  // namespace marrowfin::bench
