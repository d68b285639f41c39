#pragma once
// The host's own sign-in: the panel asks for it (request 5) when an action
// needs a user. The demo knows the stand-in service's demo user.

#include <QDialog>

class QLineEdit;

namespace marrowfin::demo {

inline constexpr quint32 kDemoUser = 10001;

// The token of a user number in the stand-in service (demo-token-N); empty for 0.
QString TokenForUser(quint32 user);

class SignInDialog : public QDialog {
    Q_OBJECT
public:
    explicit SignInDialog(QWidget* parent = nullptr);

    QLineEdit* userField() const { return m_user; }
    QLineEdit* passwordField() const { return m_password; }
    // The number typed; 0 when it is no positive number.
    quint32 userNumber() const;

private:
    QLineEdit* m_user;
    QLineEdit* m_password;
};

}  // namespace marrowfin::demo
