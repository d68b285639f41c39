#include "feedback_dialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace marrowfin::demo {

FeedbackDialog::FeedbackDialog(QWidget* parent) : QDialog(parent) {
    setWindowTitle(QStringLiteral("Feedback"));
    m_text = new QPlainTextEdit(this);
    m_text->setObjectName(QStringLiteral("feedback"));
    m_text->setPlaceholderText(QStringLiteral("What should the gallery do better?"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Close, this);
    buttons->button(QDialogButtonBox::Ok)->setText(QStringLiteral("Send"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("Tell us about the block gallery:"), this));
    layout->addWidget(m_text);
    layout->addWidget(buttons);
    resize(360, 220);
}

}  // namespace marrowfin::demo
