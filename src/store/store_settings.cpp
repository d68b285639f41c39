#include "store/store_settings.h"

#include "platform/profile.h"

namespace marrowfin {

StoreSettings StoreSettings::Load() {
    StoreSettings s;
    s.docDir = GetOptionString(u"docDir", s.docDir);
    s.downver = GetOptionInt(u"downver", s.downver);
    s.FNetUseInet = GetOptionInt(u"FNetUseInet", s.FNetUseInet);
    s.RequestNetwork = GetOptionInt(u"RequestNetwork", s.RequestNetwork);
    s.GalDefSort = GetOptionInt(u"GalDefSort", s.GalDefSort);
    s.GalDefSearch = GetOptionInt(u"GalDefSearch", s.GalDefSearch);
    s.ShowSearchTip = GetOptionInt(u"ShowSearchTip", s.ShowSearchTip);
    s.Rate = GetOptionString(u"Rate", s.Rate);
    return s;
}

void MarkForcedRefreshDone() { (void)WriteOptionInt(u"downver", 1); }

void MarkNetworkRequested() {
    // The system never writes 0: a user's "no network" choice is kept.
    if (GetOptionInt(u"RequestNetwork", -1) == -1) (void)WriteOptionInt(u"RequestNetwork", 1);
}

}  // namespace marrowfin
