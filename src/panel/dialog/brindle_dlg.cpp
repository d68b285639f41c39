#include "panel/dialog/brindle_dlg.h"
