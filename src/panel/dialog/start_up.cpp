#include "panel/dialog/start_up.h"

#include "panel/classes/class_table_refresh.h"
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
    ReadSeenClasses();
    panel.m_classVersions = ReadClassVersions(panel.m_classTable);
    if (FileExists(ClassTablePath())) {
        (void)ApplyClassTable(u"", panel.m_classTable, panel.m_classVersions);
        if (TakeRequestNetworkOption()) StartClassTableRefresh(panel.Handle());
    } else {
        // First run: the same worker as the refresh asks, whatever the
        // option says, and the panel applies the table when it is stored.
        // Until then the panel is what it is without a table: no kinds, no
        // boutique marks, no default word; a failed request leaves it so.
        panel.m_classTableComing = true;
        StartClassTableRefresh(panel.Handle());
    }
    panel.m_showDesc = panel.m_classTable.showDesc;
}

}  // namespace marrowfin
