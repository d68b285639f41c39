#pragma once
// The panel singleton as the exports reach it: some exports make it on first
// use, the others only use it when it is there.

#include <functional>

class QWidget;

namespace marrowfin {

class CBrindleDlg;

// The panel, or null while no export has made it.
CBrindleDlg* ExistingPanel();

// The panel, made and created now when missing. `parent` is the parent of a
// new window (only `show` passes the main window); `beforeCreate` runs on a
// new panel between its construction and the creation of its window. Null,
// and nothing made, while the host has no QApplication: a widget made then
// would abort the host's process.
CBrindleDlg* EnsurePanel(QWidget* parent, const std::function<void(CBrindleDlg&)>& beforeCreate = {});

}  // namespace marrowfin
