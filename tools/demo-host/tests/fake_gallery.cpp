// A stand-in for libmarrowfin.so that only counts calls, so that the loader
// is tested on a real shared object. Built twice: whole, and without most
// exports (FAKE_GALLERY_PARTIAL).
#include "marrowfin/marrowfin.h"

namespace {
int g_calls = 0;
}

extern "C" {

MARROWFIN_API int FakeGalleryCalls(void) { return g_calls; }
MARROWFIN_API void FirstSynchro(void) { ++g_calls; }
MARROWFIN_API void show(void) { ++g_calls; }
MARROWFIN_API uint64_t GetGallery(void) { return 4242; }

#ifndef FAKE_GALLERY_PARTIAL
MARROWFIN_API void ShowGallery(const char16_t*, const char16_t*) { ++g_calls; }
MARROWFIN_API void HideGallery(void) { ++g_calls; }
MARROWFIN_API void CloseGallery(void) { ++g_calls; }
MARROWFIN_API int GaDllPretanslateMsg(MarrowfinMsg*) { return 0; }
MARROWFIN_API int IsDLLHwnd(uint64_t) { return 0; }
MARROWFIN_API void SearchBrindleRes(const char16_t*, const char16_t*) { ++g_calls; }
MARROWFIN_API void ResetClass(const char16_t*) { ++g_calls; }
MARROWFIN_API uint8_t IsBlkBoutique(const char16_t*) { return 0; }
MARROWFIN_API void ShowBoutiqueGallery(void) { ++g_calls; }
MARROWFIN_API void AddMoreGallery(const char16_t*) { ++g_calls; }
MARROWFIN_API uint64_t MarrowfinWindowOf(void*) { return 7; }
MARROWFIN_API void MarrowfinSetMainWindow(void*) { ++g_calls; }
MARROWFIN_API intptr_t MarrowfinSendPanelControl(uint64_t, uintptr_t, intptr_t) { return 0; }
MARROWFIN_API intptr_t MarrowfinSendCopyData(uint64_t, uintptr_t, const char16_t*) { return 1; }
#endif
}
