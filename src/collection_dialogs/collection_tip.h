#pragma once
// The tip box of a collection road, opened without a loop of its own: it is
// modal to `parent`'s window and reports the button pressed to `then` (1 for
// the first, 2 for the second or the close button), unless `context` is gone.

#include <QPointer>
#include <functional>

#include "collection/collection_messages.h"
#include "skin/pop_tip_dlg.h"

namespace marrowfin {

CPopTipDlg* OpenCollectionTip(QWidget* parent, const CollectionMessage& shown, QObject* context,
                              std::function<void(int)> then);

}  // namespace marrowfin
