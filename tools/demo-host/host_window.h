#pragma once
// The demo host's main window: a drawing sheet, a toolbar and a menu that
// drive the gallery through its exports, a list of inserted blocks and a
// status bar. It is the window the panel talks to: requests and notices
// arrive in event() as MarrowfinHostEvent.

#include <QMainWindow>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <functional>

#include "gallery_library.h"

class QAction;
class QListWidget;
class QMenu;

namespace marrowfin::demo {

class DrawingSheet;
class FeedbackDialog;

class HostWindow : public QMainWindow {
    Q_OBJECT
public:
    // `exports` must outlive the window. `galleries` are offered as
    // locations ("\<name>") in the dialogs; may be empty.
    HostWindow(const GalleryExports& exports, QStringList galleries, QWidget* parent = nullptr);

    DrawingSheet* sheet() const { return m_sheet; }
    QListWidget* insertedList() const { return m_inserted; }
    QMenu* panelMenu() const { return m_panelMenu; }
    QAction* action(const QString& objectName) const;

    // The signed-in user (0: nobody) and what the panel last told or asked.
    quint32 userId() const { return m_userId; }
    void setUserId(quint32 user) { m_userId = user; }
    QString channel() const { return m_channel; }
    QString lastGalleryAsked() const { return m_galleryAsked; }
    QString lastStatus() const { return m_lastStatus; }
    int noticesSeen(int code) const;
    int requestsSeen(int code) const;

    // The panel's handle, 0 when there is none.
    uint64_t PanelHandle() const;

    void ShowStatus(const QString& text);

signals:
    // One line per request or notice of the panel and how it was answered.
    void panelSpoke(const QString& line);

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void BuildToolbar();
    void BuildPanelMenu();
    bool AnswerRequest(uintptr_t code, intptr_t lParam, ::MarrowfinHostEvent* event);
    void AnswerNotice(intptr_t code);
    void InsertBlock(uintptr_t code, const std::u16string& path);
    void OpenClassDialog();
    void SearchDialog();
    void SendControl(uintptr_t code);
    void SendCopyData(uintptr_t code);
    QString FirstLocation() const;

    const GalleryExports& m_exports;
    QStringList m_galleries;
    DrawingSheet* m_sheet = nullptr;
    QListWidget* m_inserted = nullptr;
    QMenu* m_panelMenu = nullptr;
    QPointer<FeedbackDialog> m_feedback;
    quint32 m_userId = 0;
    QString m_channel = QStringLiteral("demo");
    QString m_galleryAsked;
    QString m_lastStatus;
    int m_requests[9] = {};
    int m_notices[17] = {};
};

}  // namespace marrowfin::demo
