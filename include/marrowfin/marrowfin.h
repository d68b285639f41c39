#pragma once
// Marrowfin: the block gallery a CAD host loads as libmarrowfin.so.
//
// A host loads the library, calls FirstSynchro early (it builds the gallery
// tree in the background and returns at once), then shows the panel when the
// user asks for it. Texts cross as zero-terminated UTF-16; the library copies
// what it needs before returning and never keeps the host's pointer.

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(MARROWFIN_BUILDING_LIBRARY)
#define MARROWFIN_API __attribute__((visibility("default")))
#else
#define MARROWFIN_API
#endif

// Starts the first synchronisation of the gallery tree on its own thread.
// Safe before any panel exists; returns at once.
MARROWFIN_API void FirstSynchro(void);

// Adds a gallery name to the list of shown galleries (Show.xml), unless it is
// listed already. The panel picks it up at its next rebuild.
MARROWFIN_API void AddMoreGallery(const char16_t* name);

#ifdef __cplusplus
}
#endif
