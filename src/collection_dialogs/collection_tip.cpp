#include "collection_dialogs/collection_tip.h"

namespace marrowfin {

CPopTipDlg* OpenCollectionTip(QWidget* parent, const CollectionMessage& shown, QObject* context,
                              std::function<void(int)> then) {
    auto* tip = new CPopTipDlg(parent);
    tip->setAttribute(Qt::WA_DeleteOnClose);
    tip->setWindowModality(Qt::WindowModal);
    const bool twoButtons = !shown.decline.empty();
    tip->Configure(QString::fromStdU16String(shown.title), twoButtons, QString::fromStdU16String(shown.text),
                   QString::fromStdU16String(shown.second),
                   QString::fromStdU16String(shown.accept.empty() ? u"确定" : shown.accept),
                   QString::fromStdU16String(shown.decline));
    tip->OnInitDialog();
    QObject::connect(tip, &QDialog::finished, context, [tip, then = std::move(then)](int answer) {
        tip->close();
        if (then) then(answer);
    });
    tip->open();
    return tip;
}

}  // namespace marrowfin
