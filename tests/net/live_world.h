#pragma once
// The stand-in service on loopback with its fault switches and counters.

#include "fault_switches.h"
#include "net_world.h"
#include "request_counters.h"
#include "service_handle.h"
#include "support/live_service.h"
#include "support/recording_windows.h"
