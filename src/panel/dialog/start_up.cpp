#include "panel/dialog/start_up.h"

#include "panel/classes/class_table_refresh.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/hot_words.h"
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
        // First run: the pickers need a table before the panel goes on, so
        // the requests block here. A failed one leaves the tables empty.
        (void)ApplyClassTable(FetchClassTable(), panel.m_classTable, panel.m_classVersions);
        (void)TakeHotWords(panel.m_hotWords, ParseHotWords(FetchHotWords()));
    }
    panel.m_showDesc = panel.m_classTable.showDesc;
}

}  // namespace marrowfin
