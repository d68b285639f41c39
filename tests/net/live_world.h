#pragma once
// The stand-in service on loopback with its fault switches and counters, in a
// fresh home whose Show.xml lists the sample's first `listed` galleries.

#include "fault_switches.h"
#include "net_world.h"
#include "request_counters.h"
#include "service_handle.h"
#include "support/live_service.h"
#include "support/recording_windows.h"

namespace marrowfin::test {

struct LiveWorld {
    explicit LiveWorld(const SampleShape& shape = {}, size_t listed = 1) : live(shape) {
        for (size_t i = 0; i < listed; ++i) AddGalleryToShowList(live.galleries.at(i));
    }
    long Count(const char* path) { return live.Served(path); }
    service::FaultTable& faults() { return live.handle.faults(); }

    TempHome home;
    RecordingWindows windows;
    LiveService live;  // after the home: it writes the profile
};

}  // namespace marrowfin::test
