// Exports that act on the store alone, without the panel.

#include "marrowfin/marrowfin.h"

#include "host/boundary.h"
#include "host/string_arg.h"
#include "store/show_list.h"

extern "C" MARROWFIN_API void AddMoreGallery(const char16_t* name) {
    marrowfin::Shielded([name] {
        // The host keeps its buffer: the name is copied before anything else.
        const std::u16string gallery = marrowfin::TakeHostText(name);
        (void)marrowfin::AddGalleryToShowList(gallery);
    });
}
