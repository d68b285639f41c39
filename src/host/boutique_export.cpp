// IsBlkBoutique: whether a block belongs to a boutique gallery. Asked by the
// host before it lets a block into a drawing; never makes a panel.

#include "host/boundary.h"
#include "host/panel_access.h"
#include "host/string_arg.h"
#include "marrowfin/marrowfin.h"
#include "panel/dialog/brindle_dlg.h"

using namespace marrowfin;

extern "C" MARROWFIN_API uint8_t IsBlkBoutique(const char16_t* blockPath) {
    return Shielded<uint8_t>(0, [blockPath] {
        const std::u16string path = TakeHostPath(blockPath);
        CBrindleDlg* panel = ExistingPanel();
        if (!panel) return uint8_t{0};  // never makes a panel
        return panel->IsBlkBoutique(path) ? uint8_t{1} : uint8_t{0};
    });
}
