#include "panel/dialog/start_up.h"

#include "panel/dialog/brindle_dlg.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "store/store_paths.h"

namespace marrowfin {

bool TakeRequestNetworkOption() {
    int32_t request = GetOptionInt(u"RequestNetwork", -1);
    if (request == -1) {
        request = 1;
        (void)WriteOptionInt(u"RequestNetwork", request);  // unwritable profile: the run still refreshes
    }
    return request != 0;
}

void StartUpClassTable(CBrindleDlg& panel) {
    (void)panel;
    // The class table's reader, its versions and the hot words join with the
    // class table; until then the tables stay empty, as after a failed request.
    if (FileExists(ClassTablePath())) {
        const bool refresh = TakeRequestNetworkOption();
        (void)refresh;  // the background class-table refresh joins with the class table
    }
}

}  // namespace marrowfin
