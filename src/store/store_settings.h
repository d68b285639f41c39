#pragma once
// The settings of the section `options` of the profile, with their defaults.

#include <cstdint>
#include <string>

namespace marrowfin {

struct StoreSettings {
    std::u16string docDir;          // overrides the document folder when present
    int32_t downver = -1;           // -1: the one-time forced class refresh is still open
    int32_t FNetUseInet = -2;       // transport that worked last; -2: none recorded
    int32_t RequestNetwork = -1;    // 0: the class table is not refreshed from the service
    int32_t GalDefSort = 0;         // 0 "def", 1 "hot", 2 "new"
    int32_t GalDefSearch = 0;       // 0: the placeholder follows the last search
    int32_t ShowSearchTip = 1;      // non-zero: the picker shows its tip
    std::u16string Rate = u"-1";    // interface scale, "-1" automatic

    // Every value read from the profile, defaults for those absent.
    static StoreSettings Load();
};

// One-time switches that several layers flip.
void MarkForcedRefreshDone();      // downver = 1
void MarkNetworkRequested();       // RequestNetwork -1 becomes 1; 0 stays 0

}  // namespace marrowfin
