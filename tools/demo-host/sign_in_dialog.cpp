#include "sign_in_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QIntValidator>
#include <QLineEdit>
#include <QPushButton>

namespace marrowfin::demo {

QString TokenForUser(quint32 user) {
    // The stand-in service's convention; more users are added to it by the
    // same rule through its admin path.
    if (user == 0) return {};
    return QStringLiteral("demo-token-%1").arg(user);
}

SignInDialog::SignInDialog(QWidget* parent) : QDialog(parent) {
    setWindowTitle(QStringLiteral("Sign in"));
    m_user = new QLineEdit(QString::number(kDemoUser), this);
    m_user->setObjectName(QStringLiteral("user"));
    m_user->setValidator(new QIntValidator(1, 2147483647, m_user));
    m_password = new QLineEdit(QStringLiteral("demo"), this);
    m_password->setObjectName(QStringLiteral("password"));
    m_password->setEchoMode(QLineEdit::Password);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(QStringLiteral("Sign in"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* form = new QFormLayout(this);
    form->addRow(QStringLiteral("User number"), m_user);
    form->addRow(QStringLiteral("Password"), m_password);
    form->addRow(buttons);
}

quint32 SignInDialog::userNumber() const {
    bool ok = false;
    const qlonglong n = m_user->text().trimmed().toLongLong(&ok);
    return ok && n > 0 && n <= 0x7fffffff ? static_cast<quint32>(n) : 0;
}

}  // namespace marrowfin::demo
