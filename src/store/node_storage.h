#pragma once
// Storage for the tree's nodes and their texts. A library holds hundreds of
// thousands of small pieces that are made together and freed together, often
// freed on one thread while the next generation is made on another. Given to
// the general heap, those frees pile up in its fast lists, and the next
// generation's larger requests spend most of the build merging them back.
// Here each size of up to 128 bytes has free lists of its own: a thread keeps
// a few dozen pieces at hand and trades them in batches with a shared list
// under one lock. Slabs are kept for the next generation, never returned.
// Built with AddressSanitizer, every piece goes to the general heap, so that
// a use after free is still found.

#include <cstddef>

namespace marrowfin::node_storage {

// `bytes` greater than zero; pieces above 128 bytes come from the general heap.
void* Allocate(size_t bytes);
// `bytes` as given to Allocate.
void Free(void* piece, size_t bytes);

// For measuring the tree: bytes of pieces handed out and not freed, and bytes
// of slabs taken from the general heap so far. Both count every thread.
size_t BytesInUse();
size_t SlabBytes();

}  // namespace marrowfin::node_storage
