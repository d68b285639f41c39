#include "picker/gallery_type_dlg.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QWheelEvent>
#include <QPainter>
#include <algorithm>

#include "picker/gal_region_dlg.h"
#include "picker/picker_state.h"
#include "platform/qt/qt_text.h"
#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"
#include "platform/qt/window_timers.h"
#include "platform/ticks.h"
#include "skin/sel_typeclass_button.h"
#include "panel/model/panel_numbers.h"
#include "skin/skin_scale.h"

namespace marrowfin {

std::u16string g_curBoutiqueKind;
std::u16string g_curGeneralKind;

namespace {

constexpr int kFirstClassId = 2000;
constexpr int kClassKind = 1;
constexpr int kTitleKind = 2;
constexpr int kArrowKind = 4;
constexpr std::uintptr_t kReapplyTimer = 1000;
constexpr unsigned kReapplyMs = 1000;
constexpr uint32_t kPickQuietMs = 200;

// One clock for every picker of the run: a double click never toggles twice.
uint32_t g_lastPickTick = 0;
bool g_picked = false;

}  // namespace

CGalleryTypeDlg::CGalleryTypeDlg(QWidget* parent, const ClassTable& table, bool showDesc, ClassSelection selection)
    : QWidget(parent), m_selection(std::move(selection)), m_table(table), m_showDesc(showDesc) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    (void)HandleOf(this);  // the sort selector posts its reapply here
    m_canvas = new QWidget(this);
    PruneSelection(m_selection, m_table);
    BuildButtons();
    Relayout();
}

CGalleryTypeDlg::~CGalleryTypeDlg() { (void)WriteSeenVersions(); }

void CGalleryTypeDlg::Decorate(CSelTypeclassButton* button, const ClassItem& item, bool toolWithDesc) {
    button->showDesc = m_showDesc;
    button->describe = ToQString(item.describe);
    button->setToolTip(toolWithDesc ? ToQString(item.name) + QStringLiteral("（") + ToQString(item.describe) +
                                          QStringLiteral("）")
                                    : ToQString(item.name));
    const auto seen = g_seenClasses.find(item.name);
    button->version = seen != g_seenClasses.end() ? ToQString(seen->second.newest) : QString();
    button->isNew = seen != g_seenClasses.end() && seen->second.seen != seen->second.newest;
    button->boutique = FindClassItem(m_table, item.name).gv == u"1" ? 1 : 0;
    button->checked = IsSelected(m_selection, item.name) ? 1 : 0;
    // A class the user has chosen carries no new mark.
    if (button->checked) button->isNew = false;
    button->kind = kClassKind;
}

CSelTypeclassButton* CGalleryTypeDlg::MakeClassButton(const ClassItem& item, int id) {
    auto* button = new CSelTypeclassButton(m_canvas);
    button->Create(ToQString(item.name), false, QRect(), m_canvas, id);
    Decorate(button, item, m_showDesc && !item.describe.empty());
    connect(button, &QAbstractButton::clicked, this, [this, button] { ToggleClass(button); });
    return button;
}

void CGalleryTypeDlg::BuildButtons() {
    auto makeTitle = [this](const std::u16string& caption, int id, bool boutique) {
        auto* title = new CSelTypeclassButton(m_canvas);
        title->Create(ToQString(caption), true, ScaleRect(31, 5, 141, 38), m_canvas, id);
        title->kind = kTitleKind;
        title->boutique = boutique ? 1 : 0;
        title->checked = 1;
        connect(title, &QAbstractButton::clicked, this, [this, id] { ToggleSection(id); });
        return title;
    };
    m_boutiqueTitleBtn = makeTitle(g_boutiqueTitle, 1000, true);
    m_generalTitleBtn = makeTitle(g_generalTitle, 1001, false);
    for (int i = 0; i < 4; ++i) {
        const int id = 1002 + i;
        auto* arrow = new CSelTypeclassButton(m_canvas);
        arrow->Create(i % 2 == 0 ? QStringLiteral("<") : QStringLiteral(">"), false, ScaleBox(151, 91, 17, 40),
                      m_canvas, id);
        arrow->kind = kArrowKind;
        // 1002 and 1004 show the left end (+1), 1003 and 1005 the right end.
        connect(arrow, &QAbstractButton::clicked, this, [this, id] { ScrollStrip(id < 1004, id % 2 == 0 ? 1 : -1); });
        m_arrows[i] = arrow;
    }

    g_curBoutiqueKind = CurrentKind(m_table.boutiqueKinds, g_curBoutiqueKind);
    g_curGeneralKind = CurrentKind(m_table.generalKinds, g_curGeneralKind);
    int id = kFirstClassId;
    for (const auto* kinds : {&m_table.boutiqueKinds, &m_table.generalKinds}) {
        Groups& groups = kinds == &m_table.boutiqueKinds ? m_boutiqueGroups : m_generalGroups;
        for (const auto& [key, items] : *kinds) {
            std::vector<CSelTypeclassButton*>& group = groups[KindName(key)];
            for (const ClassItem& item : items) {
                CSelTypeclassButton* button = MakeClassButton(item, id++);
                m_classButtons.push_back(button);
                group.push_back(button);
            }
        }
    }
    // New boutique classes stand first in their kind.
    for (auto& [name, group] : m_boutiqueGroups)
        std::stable_partition(group.begin(), group.end(), [](CSelTypeclassButton* b) { return b->isNew; });

    auto select = [this](bool boutique) {
        return [this, boutique](CSelTypeclassButton* tab) { SelectKind(tab, boutique); };
    };
    m_boutiqueRegion = new CGalRegionDlg(m_canvas, m_table.boutiqueKinds, true, select(true));
    m_generalRegion = new CGalRegionDlg(m_canvas, m_table.generalKinds, false, select(false));
}

int CGalleryTypeDlg::PlaceGroup(Groups& groups, const std::u16string& current, bool open, int top) {
    int bottom = -1;
    for (auto& [name, group] : groups) {
        const bool shown = open && name == current;
        for (size_t i = 0; i < group.size(); ++i) {
            CSelTypeclassButton* button = group[i];
            if (shown) {
                const int column = static_cast<int>(i % 4), row = static_cast<int>(i / 4);
                button->setGeometry(ScaleUnits(30 + 233 * column), top + row * ScaleUnits(46), ScaleUnits(225),
                                    ScaleUnits(38));
                bottom = button->geometry().bottom() + 1;
            }
            button->setVisible(shown);
        }
    }
    return bottom;
}

void CGalleryTypeDlg::Relayout() {
    const bool boutiqueOverflow = m_boutiqueRegion->m_overflow;
    m_boutiqueRegion->setGeometry(boutiqueOverflow ? ScaleBox(178, 1, 738, 40) : ScaleBox(151, 1, 791, 40));
    m_arrows[0]->setGeometry(ScaleBox(151, 1, 17, 40));
    m_arrows[1]->setGeometry(ScaleBox(925, 1, 17, 40));
    m_arrows[0]->setVisible(boutiqueOverflow);
    m_arrows[1]->setVisible(boutiqueOverflow);
    m_boutiqueRegion->show();

    int h = m_boutiqueTitleBtn->geometry().bottom() + 1;
    const int boutiqueEnd = PlaceGroup(m_boutiqueGroups, g_curBoutiqueKind, m_boutiqueOpen, ScaleUnits(42));
    if (boutiqueEnd >= 0) h = boutiqueEnd;
    const int block = h + ScaleUnits(m_boutiqueOpen ? 28 : 8);

    const bool generalOverflow = m_generalRegion->m_overflow;
    m_generalTitleBtn->setGeometry(ScaleUnits(31), block + ScaleUnits(12), ScaleUnits(110), ScaleUnits(33));
    m_generalRegion->setGeometry(ScaleUnits(generalOverflow ? 178 : 151), block + ScaleUnits(8),
                                 ScaleUnits(generalOverflow ? 738 : 791), ScaleUnits(40));
    // Level with the tabs, which are drawn below the same 4-unit margin.
    m_arrows[2]->setGeometry(ScaleUnits(151), block + ScaleUnits(8), ScaleUnits(17), ScaleUnits(40));
    m_arrows[3]->setGeometry(ScaleUnits(925), block + ScaleUnits(8), ScaleUnits(17), ScaleUnits(40));
    m_arrows[2]->setVisible(generalOverflow);
    m_arrows[3]->setVisible(generalOverflow);
    m_generalRegion->show();

    int end = m_generalTitleBtn->geometry().bottom() + 1;
    const int generalEnd = PlaceGroup(m_generalGroups, g_curGeneralKind, m_generalOpen, block + ScaleUnits(52));
    if (generalEnd >= 0) end = generalEnd;
    m_contentHeight = end + ScaleUnits(10);

    const int shownHeight = std::min(m_contentHeight, ScaleUnits(540));
    setGeometry(1, ScaleUnits(89), ScaleUnits(960), shownHeight);
    m_canvas->setGeometry(0, -m_lastOffset, width(), std::max(m_contentHeight, shownHeight));
    if (onContentChanged) onContentChanged();
}

void CGalleryTypeDlg::ScrollContents(int dy) { m_canvas->move(0, m_canvas->y() + dy); }

void CGalleryTypeDlg::ToggleClass(CSelTypeclassButton* button) {
    if (g_picked && TicksSince(g_lastPickTick) <= kPickQuietMs) return;
    g_lastPickTick = GetTickCount();
    g_picked = true;
    const std::u16string name = button->text().toStdU16String();
    if (button->isNew && button->kind == kClassKind) {
        button->isNew = false;
        g_seenClasses.erase(name);
    }
    button->boutique = FindClassItem(m_table, name).gv == u"1" ? 1 : 0;
    button->checked = button->checked ? 0 : 1;
    button->Redraw();
    if (button->checked) SelectFirst(m_selection, name, button->describe.toStdU16String());
    else Deselect(m_selection, name);
}

void CGalleryTypeDlg::ClearSelection() {
    for (CSelTypeclassButton* button : m_classButtons) {
        button->checked = 0;
        button->Redraw();
    }
    m_selection.clear();
    if (onSelectionCleared) onSelectionCleared();
}

void CGalleryTypeDlg::ToggleSection(int id) {
    bool& open = id == 1000 ? m_boutiqueOpen : m_generalOpen;
    open = !open;
    CSelTypeclassButton* title = SectionTitle(id == 1000);
    title->checked = open ? 1 : 0;
    Relayout();
    title->Redraw();
}

void CGalleryTypeDlg::SelectKind(CSelTypeclassButton* tab, bool boutique) {
    const std::u16string name = tab->text().toStdU16String();
    if (tab->kindIsNew) {
        tab->kindIsNew = false;
        g_seenKinds[name].seen = tab->version.toStdU16String();
    }
    (boutique ? g_curBoutiqueKind : g_curGeneralKind) = name;
    CGalFullTypeDlg* strip = Region(boutique)->m_pStrip;
    for (CSelTypeclassButton* other : strip->m_tabs) {
        other->checked = other == tab ? 1 : 0;
        other->Redraw();
    }
    strip->m_curTab = tab;
    // A tab of a closed section opens it.
    if (!(boutique ? m_boutiqueOpen : m_generalOpen)) ToggleSection(boutique ? 1000 : 1001);
    else Relayout();
    RefreshButtons(false);
}

void CGalleryTypeDlg::RefreshButtons(bool reopen) {
    // The buttons stay where they are and take on the classes in the table's
    // order, which a new sort may have changed.
    size_t index = 0;
    for (const auto* kinds : {&m_table.boutiqueKinds, &m_table.generalKinds})
        for (const auto& [key, items] : *kinds)
            for (const ClassItem& item : items) {
                if (index >= m_classButtons.size()) goto walked;
                CSelTypeclassButton* button = m_classButtons[index++];
                button->setText(ToQString(item.name));
                Decorate(button, item, true);
                button->Redraw();
            }
walked:
    if (!reopen) return;
    if (!m_boutiqueOpen) ToggleSection(1000);
    if (!m_generalOpen) ToggleSection(1001);
}

void CGalleryTypeDlg::ScrollStrip(bool boutique, int direction) { Region(boutique)->ScrollStrip(direction); }

CSelTypeclassButton* CGalleryTypeDlg::VisibleClassButton(const QString& name) const {
    for (CSelTypeclassButton* button : m_classButtons)
        if (button->isVisibleTo(m_canvas) && button->text() == name) return button;
    return nullptr;
}

CSelTypeclassButton* CGalleryTypeDlg::Tab(bool boutique, const QString& kind) const {
    for (CSelTypeclassButton* tab : Region(boutique)->m_pStrip->m_tabs)
        if (tab->text() == kind) return tab;
    return nullptr;
}

CSelTypeclassButton* CGalleryTypeDlg::Arrow(int id) const {
    return id >= 1002 && id <= 1005 ? m_arrows[id - 1002] : nullptr;
}

bool CGalleryTypeDlg::event(QEvent* event) {
    if (event->type() == WindowMessageEvent::EventType()) {
        auto* message = static_cast<WindowMessageEvent*>(event);
        if (message->Message() == MsgPanelCommand && message->WParam() == PanelCommand::PickerReapplyOrder) {
            (void)SetTimer(HandleOf(this), kReapplyTimer, kReapplyMs);
        } else if (message->Message() == WM_TIMER_MESSAGE && message->WParam() == kReapplyTimer) {
            (void)KillTimer(HandleOf(this), kReapplyTimer);
            RefreshButtons(true);
        }
        return true;
    }
    return QWidget::event(event);
}

void CGalleryTypeDlg::keyPressEvent(QKeyEvent* event) {
    // Neither Esc nor Return ends the manager from inside the catalogue.
    if (event->key() == Qt::Key_Escape || event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        event->accept();
        return;
    }
    QWidget::keyPressEvent(event);
}

void CGalleryTypeDlg::wheelEvent(QWheelEvent* event) {
    // The manager scrolls the whole picker, wherever the wheel turns in it.
    if (parentWidget()) QCoreApplication::sendEvent(parentWidget(), event);
    event->accept();
}

void CGalleryTypeDlg::paintEvent(QPaintEvent*) { QPainter(this).fillRect(rect(), Qt::white); }

}  // namespace marrowfin
