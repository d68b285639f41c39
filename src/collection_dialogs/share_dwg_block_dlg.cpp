#include "collection_dialogs/share_dwg_block_dlg.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include "collection/collection_calls.h"
#include "collection/collection_folders.h"
#include "collection_dialogs/share_sel_combo_box.h"
#include "skin/measure_text.h"
#include "skin/progress_ctrl_owner.h"
#include "skin/skin_button.h"
#include "skin/skin_fonts.h"
#include "skin/skin_paint.h"
#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"

namespace marrowfin {

std::u16string g_shareKind;

namespace {

// The dialog's own protocol between its worker, its timer and itself.
constexpr uint32_t MsgShareProgress = 2924;
constexpr uintptr_t kRequestDone = 1;
constexpr uintptr_t kOutcome = 3;

const QColor kFrame(0x88, 0x88, 0x88);
const QColor kOutline(0x99, 0x99, 0x99);
const QColor kHoverOutline(0x29, 0x75, 0xE6);
const QColor kTriangle(0x99, 0x99, 0x99);

QRect KindField() { return ScaleRect(77, 214, 171, 238); }

void DrawCentred(QPainter& painter, int left, int top, int right, int bottom, const QString& text) {
    DrawTextLine(painter, ScaleRect(left, top, right, bottom), text, Font(SkinFont::Normal), Qt::black,
                 TextPlace::Centre, true);
}

}  // namespace

std::vector<std::u16string> ShareKindRows(const std::vector<std::u16string>& rootChildren) {
    std::vector<std::u16string> rows;
    for (const std::u16string& child : rootChildren)
        if (child != kCollectionClass) rows.push_back(child);
    if (rootChildren.size() == 1) rows.push_back(u"其他");
    return rows;
}

CShareDWGblockDlg::CShareDWGblockDlg(QWidget* parent, std::u16string token,
                                     const std::vector<std::u16string>& rootChildren)
    : CCollectionDialogFrame(
          parent, FrameLook{250, 354, kFrame, QStringLiteral("分享收藏"), 8, 31, true, Qt::black, QRect(8, 6, 96, 20)}),
      m_token(std::move(token)) {
    setMouseTracking(true);
    m_okButton = MakeButton(QStringLiteral("分享"), 50, ScaleBox(65, 275, 120, 24), IdShare);
    m_cancel = MakeButton(QStringLiteral("取消"), 51, ScaleBox(65, 309, 120, 24), IdCancel);
    MakeCloseButton(QRect(width() - ScaleUnits(24), ScaleUnits(7), ScaleUnits(16), ScaleUnits(16)), IdClose);
    connect(m_okButton, &QAbstractButton::clicked, this, [this] { Start(); });
    connect(m_cancel, &QAbstractButton::clicked, this, [this] { reject(); });

    m_combo = new ShareSelComboBox(this, 20, ScaleBox(77, 214, 95, 24), IdKindCombo);
    for (const std::u16string& row : ShareKindRows(rootChildren)) m_combo->addItem(QString::fromStdU16String(row));
    g_shareKind = m_combo->itemText(0).toStdU16String();

    m_progress = new CProgressCtrlOwner(this);
    m_progress->setGeometry(ScaleBox(33, 232, 182, 7));
    m_progress->hide();

    connect(&m_stepTimer, &QTimer::timeout, this, [this] { OnStepTimer(); });
    m_settleTimer.setSingleShot(true);
    connect(&m_settleTimer, &QTimer::timeout, this, [this] { OnSettleTimer(); });
}

void CShareDWGblockDlg::Start() {
    m_started = true;
    m_okButton->hide();
    m_combo->hide();
    m_combo->hidePopup();
    m_progress->ResetRange();
    m_progress->SetPos(0);
    m_progress->show();
    m_percent = 5;
    m_result = -1;
    m_stepTimer.start(m_stepMs);
    const WindowHandle self = HandleOf(this);
    const std::u16string token = m_token;
    const bool started = StartWorker([self, token] {
        const bool delivered = ShareCollection(token).delivered;
        // A dialog closed meanwhile has a dead handle: the post is lost with it.
        (void)PostWindowMessage(self, MsgShareProgress, delivered ? kRequestDone : kOutcome, 0);
    });
    if (!started) (void)PostWindowMessage(self, MsgShareProgress, kOutcome, 0);
    update(ScaleRect(0, 190, 250, 244));
}

void CShareDWGblockDlg::OnStepTimer() {
    m_progress->SetPos(m_percent);
    m_percent = std::min(m_percent + 1, 20);
}

void CShareDWGblockDlg::OnSettleTimer() {
    m_settleTimer.stop();
    m_stepTimer.stop();
    m_progress->SetPos(95);
    (void)PostWindowMessage(HandleOf(this), MsgShareProgress, kOutcome, 1);
}

void CShareDWGblockDlg::OnWindowMessage(uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                                        MessagePayload* payload) {
    if (message == MsgComboChoice && wParam == kComboChoiceMade) {
        g_shareKind = m_combo->CurrentText().toStdU16String();
        update(KindField());
        return;
    }
    if (message != MsgShareProgress) {
        CCollectionDialogFrame::OnWindowMessage(message, wParam, lParam, payload);
        return;
    }
    if (wParam == kRequestDone) {
        m_settleTimer.start(m_settleMs);
    } else if (wParam == kOutcome && lParam == 1) {
        m_progress->SetPos(100);
        m_result = 1;
        m_cancel->setText(QStringLiteral("关闭"));
        update(ScaleRect(0, 128, 250, 228));
    } else if (wParam == kOutcome) {
        // The step timer runs on until the dialog ends or a new start resets it.
        m_result = 0;
        m_okButton->setText(QStringLiteral("重新分享"));
        m_okButton->show();
        m_cancel->setText(QStringLiteral("关闭"));
        update(ScaleRect(0, 188, 250, 228));
    }
}

void CShareDWGblockDlg::mousePressEvent(QMouseEvent* event) {
    const QPoint at = event->position().toPoint();
    if (event->button() == Qt::LeftButton && at.y() > ScaleUnits(31) && !m_started && KindField().contains(at))
        m_combo->ShowDropDown();
    CCollectionDialogFrame::mousePressEvent(event);
}

void CShareDWGblockDlg::mouseMoveEvent(QMouseEvent* event) {
    if (!m_started) {
        const bool over = KindField().contains(event->position().toPoint());
        if (over != m_hoverKind) {
            m_hoverKind = over;
            update(ScaleRect(70, 210, 177, 244));
        }
    }
    CCollectionDialogFrame::mouseMoveEvent(event);
}

void CShareDWGblockDlg::PaintOutcome(QPainter& painter, const QString& text, int cellX) {
    const int textWidth = MeasureText(text);
    const int x = (ScaleUnits(250) - textWidth - ScaleUnits(18)) / 2;
    DrawSheetCell(painter, QRect(x, ScaleUnits(201), ScaleUnits(14), ScaleUnits(14)), cellX, 72, 14, 14);
    DrawTextLine(painter, QRect(QPoint(x + ScaleUnits(18), ScaleUnits(188)), QPoint(ScaleUnits(250), ScaleUnits(228))),
                 text, Font(SkinFont::Normal), Qt::black, TextPlace::Left, true);
}

void CShareDWGblockDlg::PaintBody(QPainter& painter) {
    DrawSheetCell(painter, ScaleBox(85, 51, 75, 75), 285, 0, 75, 75);
    if (m_result != 1) {
        DrawCentred(painter, 0, 128, 250, 168, QStringLiteral("将收藏分享给Tarvex"));
        DrawCentred(painter, 0, 148, 250, 188, QStringLiteral("完善图库素材"));
    } else {
        DrawCentred(painter, 0, 138, 250, 178, QStringLiteral("感谢您的分享"));
    }
    if (!m_started) {
        DrawCentred(painter, 0, 180, 250, 220, QStringLiteral("选择种类"));
        const QRect field = KindField();
        painter.setBrush(Qt::NoBrush);
        painter.setPen(m_hoverKind ? kHoverOutline : kOutline);
        painter.drawRect(field.adjusted(0, 0, -1, -1));
        QPainterPath triangle;
        triangle.moveTo(ScaleUnits(156), ScaleUnits(224));
        triangle.lineTo(ScaleUnits(166), ScaleUnits(224));
        triangle.lineTo(ScaleUnits(161), ScaleUnits(229));
        triangle.closeSubpath();
        painter.fillPath(triangle, kTriangle);
        DrawTextLine(painter, ScaleRect(84, 214, 152, 238), QString::fromStdU16String(g_shareKind),
                     Font(SkinFont::Normal), Qt::black, TextPlace::Left, true);
        return;
    }
    if (m_result == -1) DrawCentred(painter, 0, 188, 250, 228, QStringLiteral("正在分享"));
    else if (m_result == 1) PaintOutcome(painter, QStringLiteral("分享成功"), 158);
    else PaintOutcome(painter, QStringLiteral("分享失败，请检查网络"), 172);
}

}  // namespace marrowfin
