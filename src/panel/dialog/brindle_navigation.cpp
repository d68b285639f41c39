// Pages, class switching, subclasses, routes, search commands and the panel buttons.
#include <QLineEdit>

#include <optional>
#include <utility>

#include "net/gallery_sync.h"
#include "panel/dialog/ad_tiles_road.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/collection_rows.h"
#include "panel/dialog/hot_words.h"
#include "panel/dialog/panel_timers.h"
#include "panel/lists/class_list_ctrl.h"
#include "panel/lists/dwg_list_view.h"
#include "panel/lists/search_list_ctrl.h"
#include "platform/files.h"
#include "platform/qt/window_timers.h"
#include "platform/text.h"
#include "platform/ticks.h"
#include "skin/pop_tip_dlg.h"
#include "skin/skin_button.h"
#include "skin/skin_scale.h"
#include "skin/subclass_button.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "store/store_ini.h"

namespace marrowfin {

namespace {

constexpr char16_t kRecentText[] = u"最近使用";
constexpr char16_t kCollectionText[] = u"我的收藏";
constexpr char16_t kCollectionRoute[] = u"/我的收藏";
constexpr char16_t kCommonText[] = u"常用";

// Subclass buttons stand in two rows of nine.
constexpr int kSubclassRow = 9;
constexpr int kSubclassButtons = 18;

// Rapid presses are damped by tick differences: a press counts only when
// more than this many ticks have passed since the last accepted one.
constexpr uint32_t kSubclassQuietMs = 350;
constexpr uint32_t kSearchQuietMs = 450;

constexpr unsigned kRightStripMs = 1000;
constexpr unsigned kRepaintAllMs = 1200;
constexpr unsigned kRouteRebuildMs = 250;

QString Q(std::u16string_view text) { return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size())); }
std::u16string S(const QString& text) { return text.toStdU16String(); }

void SetShown(QWidget* widget, bool shown) {
    if (widget) widget->setVisible(shown);
}

// The tip of a subclass button: the name behind the first "..", unless the
// name starts with it.
QString SubclassTip(const std::u16string& name) {
    const size_t dots = name.find(u"..");
    if (dots != std::u16string::npos && dots > 0) return Q(std::u16string_view(name).substr(dots + 2));
    return Q(name);
}

}  // namespace

// ---- class column ----------------------------------------------------------

void CBrindleDlg::SelectClass(int row, bool highlight) {
    if (highlight && m_classList && m_classList->GetSelectedRow() != row) {
        m_classList->SetSelectedRow(row);
        if (!m_classList->IsRowInClient(row)) m_classList->EnsureVisible(row);
    }
    m_pendingClass = row;
    // A burst of selections restarts the one timer and ends in one switch.
    SetTimer(Handle(), kTimerClassSwitch, m_slowSwitch ? 350 : 100);
    m_slowSwitch = true;
}

void CBrindleDlg::RebuildClassList() {
    if (!m_classList) return;
    // Rows ask while painting whether their gallery is boutique; the mark
    // lives on the gallery's node (command 19 refreshes it).
    if (!m_classList->isBoutique) {
        m_classList->isBoutique = [this](const QString& text) {
            if (!m_store || !m_store->root) return false;
            const std::u16string name = S(text);
            for (const GalleryNode* gallery : m_store->root->dirChildren)
                if (gallery && gallery->name == name) return gallery->boutique;
            return false;
        };
    }
    m_classList->DeleteAllItems();
    m_classList->InsertItem(0, Q(kRecentText));
    m_classList->InsertItem(1, Q(kCollectionText));
    if (!m_store || !m_store->root) return;
    for (const GalleryNode* gallery : m_store->root->dirChildren) {
        if (!gallery || gallery->name == kCollectionText) continue;
        m_classList->InsertItem(m_classList->GetItemCount(), Q(gallery->name));
    }
}

void CBrindleDlg::PlaceThumbList(int entries) {
    if (!m_pThumbList) return;
    int top = entries <= kSubclassRow ? 72 : 106;
    int height = entries <= kSubclassRow ? 343 : 309;
    // The collection bar takes a strip above the buttons.
    if (m_page == PageCollection) {
        top += 38;
        height -= 38;
    }
    m_pThumbList->setGeometry(ScaleBox(133, top, 617, height));
}

// A class without a directory or without subclasses: the page stands empty,
// with "添加图块" on the collections and "下载图库" elsewhere.
void CBrindleDlg::ShowEmptyClass(int row, const std::u16string& path) {
    m_itemCount = 0;
    SetShown(Button(2150), row == 1);
    SetShown(Button(2151), row != 1);
    SetShown(m_pThumbList, false);
    SetTimer(Handle(), kTimerRightStrip, kRightStripMs);
    update();
    m_classIndex = row;
    m_targetClass.clear();
    m_curClassPath = path;
}

bool CBrindleDlg::ClassIsBoutique(const std::u16string& path) const {
    return IsBoutiqueClass(m_classTable, path);
}

void CBrindleDlg::SwitchClass(int row) {
    if (!m_classList) return;
    std::u16string text = S(m_classList->GetItemText(row));
    if (!m_store || !m_store->root) return;
    GalleryNode* root = m_store->root;

    PostWindowMessage(Handle(), MsgPanelCommand, 1, -1);
    m_syncStatus = -1;
    PostWindowMessage(Handle(), MsgPanelEvent, 4, 0);
    m_listNodes.Reset(*m_store);
    m_summaryPending.clear();
    m_itemsPending.clear();
    m_forceList = false;

    const bool barShown = !m_collectionBtns.empty() && m_collectionBtns[0] && m_collectionBtns[0]->isVisible();
    if (m_classIndex >= 0 && (m_classIndex == 1 || barShown)) LayoutCollectionBar(false);

    if (row == 1) {
        m_page = PageCollection;
        LayoutCollectionBar(true);
        PostWindowMessage(Handle(), MsgPanelCommand, 5, -1);
    } else {
        m_page = PageBrowse;
    }

    for (CSubclassButton* button : m_subclassBtns) SetShown(button, false);
    m_curClassPath.clear();
    m_itemCount = 0;
    m_emptySubclassOpened = false;
    SetShown(Button(2150), false);
    SetShown(Button(2151), false);

    if (text == kRecentText) {
        m_curClassPath = root->Path();
        std::vector<std::u16string> paths;
        for (GalleryNode* entry : root->fileChildren) {
            if (!entry) continue;
            paths.push_back(entry->Path());
            m_listNodes.Add(entry);
        }
        m_itemCount = static_cast<int>(m_listNodes.size());
        if (m_itemCount > 0) {
            if (m_pThumbList) {
                m_pThumbList->setGeometry(ScaleBox(133, 72, 617, 343));
                m_pThumbList->show();
                m_pThumbList->SetPaths(paths);
            }
            SetTimer(Handle(), kTimerRightStrip, kRightStripMs);
            update(ScaleRect(115, 42, 205, 65));
        } else {
            SetShown(m_pThumbList, false);
            SetTimer(Handle(), kTimerRightStrip, kRightStripMs);
            update();
        }
        m_classIndex = row;
        m_targetClass.clear();
        return;
    }

    const bool justRead = std::exchange(m_collectionJustRead, false);
    if (row == 1) {
        // The folders come from the service; the page shows that it loads.
        const int previous = m_classIndex;
        m_classIndex = 1;
        if (justRead) return ContinueCollectionSwitch(previous, 1);
        ReloadCollection([this, previous](int reloaded) { ContinueCollectionSwitch(previous, reloaded); });
        return;
    }
    ShowClassOf(row, text);
}

// The class switch's half after the reload: the folders on the subclass
// buttons, or back to the row the user came from when nothing could be read.
void CBrindleDlg::ContinueCollectionSwitch(int previous, int reloaded) {
    // The user went elsewhere while the folders were on their way.
    if (m_classIndex != 1 || m_page != PageCollection) return;
    if (reloaded == 0) {
        if (previous == -2) return;  // "重试" keeps the page with its failure
        m_forceList = true;
        SelectClass(previous == 1 || previous < 0 ? 0 : previous, true);
        return;
    }
    if (reloaded == 2 || userId < 2) return;
    ShowClassOf(1, MirrorName(userId));
}

void CBrindleDlg::ShowClassOf(int row, const std::u16string& text) {
    GalleryNode* root = m_store ? m_store->root : nullptr;
    if (!root) return;
    const std::u16string path = root->Path() + u"/" + text;
    if (!DirectoryExists(path)) {
        ShowEmptyClass(row, path);
        return;
    }

    GalleryNode* node = FindNodeByPath(root, path);
    bool hasClasses = false;
    if (node && !IsFile(*node))
        for (const GalleryNode* child : node->dirChildren) hasClasses = hasClasses || child != nullptr;
    if (!hasClasses) {
        ShowEmptyClass(row, node ? node->Path() : path);
        return;
    }

    m_classIndex = row;
    if (row >= 2) {
        // An outdated summary is fetched on a worker; its arrival shows the classes.
        if (std::optional<TreeRequest> request = PrepareClassSummary(*m_store, text)) {
            if (StartTreeRequest(*m_store, std::move(*request))) {
                m_summaryPending = text;
                return;
            }
        }
    }
    ShowGalleryClasses(row, path);
}

void CBrindleDlg::ShowGalleryClasses(int row, const std::u16string& path) {
    GalleryNode* root = m_store ? m_store->root : nullptr;
    GalleryNode* node = root ? FindNodeByPath(root, path) : nullptr;
    if (!node) {
        ShowEmptyClass(row, path);
        return;
    }

    // Fill the subclass buttons: "常用" first for a gallery with common-use entries.
    bool common = false;
    if (row >= 2)
        for (const GalleryNode* entry : node->fileChildren) common = common || entry != nullptr;
    int slot = 0;
    int chosen = 2080;
    int children = 0;
    auto fill = [&](CSubclassButton* button, const std::u16string& data, const std::u16string& caption) {
        button->data = Q(data);
        button->setText(Q(caption));
        button->selected = false;
        button->show();
        if (!m_targetClass.empty() && data == m_targetClass) chosen = button->ControlId();
    };
    if (common && !m_subclassBtns.empty()) {
        CSubclassButton* button = m_subclassBtns[0];
        fill(button, node->Path(), kCommonText);
        button->setToolTip(Q(kCommonText));
        button->boutique = false;
        slot = 1;
    }
    for (GalleryNode* child : node->dirChildren) {
        if (!child) continue;
        ++children;
        if (slot >= kSubclassButtons || slot >= static_cast<int>(m_subclassBtns.size())) continue;
        CSubclassButton* button = m_subclassBtns[slot++];
        fill(button, child->Path(), child->name.str());
        button->setToolTip(SubclassTip(child->name.str()));
        button->boutique = !common && ClassIsBoutique(child->Path());
    }

    m_itemCount = children + (common ? 1 : 0);
    if (m_itemCount < 1) {
        ShowEmptyClass(row, path);
        return;
    }
    m_forceList = true;
    PlaceThumbList(m_itemCount);
    // The 350 ms rule damps presses on the buttons. The switch's own opening
    // is no press: damped, it would leave the new class's buttons over the
    // old class's list. It still counts as the last opening for the rule.
    m_subclassTicked = false;
    OpenSubclass(chosen);

    m_targetClass.clear();
    if (m_classIndex == 1) SetTimer(Handle(), kTimerRepaintAll, kRepaintAllMs);
}

// ---- subclass buttons ------------------------------------------------------

void CBrindleDlg::OpenSubclass(int id) {
    if (m_subclassTicked && TicksSince(m_subclassTick) <= kSubclassQuietMs) return;
    m_subclassTick = GetTickCount();
    m_subclassTicked = true;

    const int index = id - 2080;
    if (index < 0 || index >= static_cast<int>(m_subclassBtns.size())) return;
    CSubclassButton* button = m_subclassBtns[index];
    if (!button) return;
    if (button == m_openedSubclass && !m_forceList) return;

    PostWindowMessage(Handle(), MsgPanelCommand, 5, -1);
    m_forceList = false;
    if (m_openedSubclass && m_openedSubclass != button) {
        m_openedSubclass->selected = false;
        m_openedSubclass->Redraw();
    }
    button->selected = true;
    button->Redraw();
    SetShown(Button(2150), false);
    SetShown(Button(2151), false);

    if (!m_store || !m_store->root) return;
    const std::u16string path = S(button->data);
    GalleryNode* opened = FindNodeByPath(m_store->root, path);
    if (!opened) return;

    m_curClassPath = path;
    m_listNodes.Reset(*m_store);
    m_itemsPending.clear();
    m_openedSubclass = button;
    // A folder of the collections takes its blocks from the service first;
    // their arrival lists it.
    if (opened->OwnerName() == kCollectionClass) {
        if (!LoadFolderBlocks(button, path)) ListSubclass(button, path);
        return;
    }
    // Outdated blocks are fetched on a worker; their arrival lists the class.
    if (ClassIsStale(*m_store, path)) {
        if (std::optional<TreeRequest> request = PrepareClassItems(*m_store, path)) {
            if (StartTreeRequest(*m_store, std::move(*request))) {
                m_itemsPending = path;
                return;
            }
        }
    }
    ListSubclass(button, path);
}

void CBrindleDlg::ListSubclass(CSubclassButton* button, const std::u16string& path) {
    GalleryNode* node = m_store && m_store->root ? FindNodeByPath(m_store->root, path) : nullptr;
    if (!node) return;
    m_listNodes.Reset(*m_store);

    // A tile takes the first cell as an empty path and a null node; the
    // blocks follow it and selection starts behind it.
    std::vector<std::u16string> paths;
    const int first = ClassShowsAdTile(*this) ? 1 : 0;
    if (first) {
        paths.emplace_back();
        m_listNodes.Add(nullptr);
    }
    for (GalleryNode* child : node->fileChildren) {
        if (!child) continue;
        paths.push_back(child->Path());
        m_listNodes.Add(child);
    }
    m_itemCount = static_cast<int>(m_listNodes.size()) - first;
    m_emptySubclassOpened = false;

    if (m_itemCount > 0) {
        if (m_pThumbList) {
            m_pThumbList->show();
            m_pThumbList->SetPaths(paths);
        }
        SetTimer(Handle(), kTimerRightStrip, kRightStripMs);
        if (m_pThumbList) {
            m_pThumbList->SetSelectedItem(first);
            m_pThumbList->EnsureVisible(first);
            m_pThumbList->setFocus();
        }
        PostWindowMessage(Handle(), MsgPanelCommand, 1, first);
    } else {
        PostWindowMessage(Handle(), MsgPanelCommand, 1, -1);
        if (m_classIndex == 1) {
            SetShown(Button(2150), true);
            SetShown(Button(2151), false);
        } else {
            SetShown(Button(2150), false);
            if (button->text() != Q(kCommonText)) {
                SetShown(Button(2151), true);
                m_emptySubclassOpened = true;
            }
        }
        SetShown(m_pThumbList, false);
        SetTimer(Handle(), kTimerRightStrip, kRightStripMs);
        update();
    }

    m_openedSubclass = button;
    if (m_focusPending) {
        m_focusPending = false;
        if (m_pThumbList) {
            int item = first;
            const std::u16string name = S(m_focusRow.name);
            for (size_t i = 0; i < m_listNodes.size(); ++i) {
                const GalleryNode* listed = m_listNodes.At(*m_store, i);
                if (listed && listed->name == name) {
                    item = static_cast<int>(i);
                    break;
                }
            }
            m_pThumbList->SetSelectedItem(item);
            m_pThumbList->EnsureVisible(item);
            m_pThumbList->setFocus();
        }
        m_focusRow = BlockRow{};
    }
}

void CBrindleDlg::LayoutCollectionBar(bool shown) {
    if (!shown) SendWindowMessage(Handle(), MsgPanelEvent, 5, -2);
    const int firstTop = shown ? 79 : 41;
    const int secondTop = shown ? 113 : 75;
    for (size_t i = 0; i < m_subclassBtns.size(); ++i) {
        CSubclassButton* button = m_subclassBtns[i];
        if (!button) continue;
        const int n = static_cast<int>(i);
        const int left = n < kSubclassRow ? 136 + 68 * n : 136 + 68 * (n - kSubclassRow);
        button->move(ScaleUnits(left), ScaleUnits(n < kSubclassRow ? firstTop : secondTop));
    }
    for (CSkinButton* button : m_collectionBtns) SetShown(button, shown);
}

// ---- pages -----------------------------------------------------------------

void CBrindleDlg::GoToPage(int page) {
    PostWindowMessage(Handle(), MsgPanelCommand, 1, -1);
    if (m_page == PageCollectionSearch && page != m_page) ForgetCollectionRows();

    const bool toSearch = IsSearchPage(page) && page != m_page;
    if (toSearch) {
        if (m_classIndex == 1) LayoutCollectionBar(false);
        SetShown(Button(2158), false);
        if (m_pThumbList) {
            m_pThumbList->setGeometry(ScaleBox(133, 72, 617, 343));
            m_pThumbList->hide();
        }
        SetShown(m_searchEdit, true);
        if (m_searchBtns.size() > 2) {
            SetShown(m_searchBtns[1], true);
            SetShown(m_searchBtns[2], true);
        }
        for (CSkinButton* button : m_collectionBtns) SetShown(button, false);
        for (CSubclassButton* button : m_subclassBtns) SetShown(button, false);
        SetShown(Button(2002), false);
        SetShown(Button(2150), false);
        SetShown(Button(2151), false);
        SetShown(m_classList, false);
        m_searchUntouched = true;
        if (m_store) m_localHits.Reset(*m_store);
        if (page == PageSearch) {
            ShowHotWords(true);
            m_page = PageSearch;
            if (m_searchEdit) {
                m_searchEdit->setCursorPosition(0);
                m_searchEdit->setFocus();
            }
            update();
        } else {
            if (m_searchEdit) m_searchEdit->setFocus();
            m_collectionRows.clear();
            update();
            m_page = PageCollectionSearch;
            LoadCollectionRows();
        }
        return;
    }

    if (!IsSearchPage(page) && IsSearchPage(m_page)) {
        m_lastSearch.clear();
        SetShown(Button(2158), true);
        SetShown(m_searchEdit, false);
        SetShown(m_searchList, false);
        for (CSkinButton* button : m_searchBtns) SetShown(button, false);
        if (m_classIndex == 1) {
            for (CSkinButton* button : m_collectionBtns) SetShown(button, true);
            m_page = PageCollection;
        } else {
            m_page = PageBrowse;
        }
        update();
        if (m_searchEdit) m_searchEdit->clear();
        SetShown(m_classList, true);
        SetShown(Button(2002), true);
        SetShown(Button(2150), false);
        SetShown(Button(2151), false);
        m_searchUntouched = false;
        // The tick rebuilds the class list and reopens the class.
        if (!m_curClassPath.empty()) SetTimer(Handle(), kTimerBuildClassList, kClassListMs);
    }
}

void CBrindleDlg::LoadCollectionRows() {
    // Asked on a worker; the page shows "图块加载中，请稍候" until the rows land.
    const std::u16string base = m_store && m_store->root ? m_store->root->Path() : std::u16string();
    m_collectionRowsPending = true;
    m_searchState = 1;
    StartCollectionRowsFetch(Handle(), ++m_collectionRowsGeneration, userToken, base + u"/" + MirrorName(userId));
}

// ---- routes ----------------------------------------------------------------

void CBrindleDlg::OpenRoute(const std::u16string& route) {
    if (route.empty()) {
        if (!IsSearchPage(m_page)) SetTimer(Handle(), kTimerBuildClassList, kRouteRebuildMs);
        return;
    }
    if (IsSearchPage(m_page)) {
        m_curClassPath.clear();
        SearchCommand(2202);
    }
    if (route.rfind(kCollectionRoute, 0) == 0) {
        m_targetClass = route;
        OpenTargetClass();
        return;
    }
    OpenClassRoute(route);
}

void CBrindleDlg::OpenTargetClass() {
    if (!m_store || !m_store->root || m_targetClass.empty()) return;
    if (!m_classesReady && !m_rebuildingClasses) {
        const std::u16string saved = m_targetClass;
        SendWindowMessage(Handle(), MsgPanelCommand, 0, 0);
        m_targetClass = saved;
        KillTimer(Handle(), kTimerBuildClassList);
    }

    std::u16string target = m_targetClass;
    if (target.find(kCollectionRoute) != std::u16string::npos) {
        if (userId < 2 || userId != m_collectionUser) {
            m_collectionUser = userId;
            ReloadCollection([this](int reloaded) {
                if (reloaded == 1 && userId >= 2) OpenTargetClass();
            });
            return;
        }
        m_forceList = true;
        const size_t at = target.find(kCollectionText);
        target.replace(at, std::char_traits<char16_t>::length(kCollectionText),
                       MirrorName(userId));
    }

    GalleryNode* root = m_store->root;
    const std::u16string full = root->Path() + target;
    GalleryNode* node = FindNodeByPath(root, full);
    if (!node) return;
    // SwitchClass opens the subclass button whose path is the target.
    m_targetClass = full;

    if (IsSearchPage(m_page)) {
        m_curClassPath.clear();
        SearchCommand(2202);
    }

    GalleryNode* parent = node->parent;
    if (!parent) return;
    std::u16string name;
    if (parent == root)
        name = node->name;
    else if (parent->parent == root)
        name = parent->name;
    else
        return;

    int row = -1;
    if (name == kCollectionText) {
        row = 1;
    } else if (name == kRecentText) {
        row = 0;
    } else if (m_classList) {
        const QString wanted = Q(name);
        for (int i = 0; i < m_classList->GetItemCount(); ++i) {
            if (m_classList->GetItemText(i) == wanted) {
                row = i;
                break;
            }
        }
    }
    if (row < 0) return;
    SelectClass(row, true);
}

// ---- search commands ---------------------------------------------------------

void CBrindleDlg::SearchCommand(int id) {
    if (id == 2201 || id == 2205) m_searchTicked = false;
    if (m_searchTicked && TicksSince(m_searchTick) <= kSearchQuietMs) return;
    m_searchTick = GetTickCount();
    m_searchTicked = true;

    switch (id) {
        case 2200:
            if (m_searchEdit) m_searchEdit->clear();
            if (!m_searchBtns.empty()) SetShown(m_searchBtns[0], false);
            if (m_searchEdit) m_searchEdit->setFocus();
            return;
        case 2201:
            if (m_page == PageCollectionSearch) {
                RunCollectionFilter();
                return;
            }
            if (m_page != PageSearch) return;
            break;  // as 2204
        case 2202:
            m_localHits.clear();
            m_rows.clear();
            ListRows();
            m_searchState = 0;
            m_downloadQueue.clear();  // waiting downloads go; running ones find no row
            m_forceList = true;
            GoToPage(PageBrowse);
            ShowHotWords(false);
            return;
        case 2203:
            RunLocalSearch();
            return;
        case 2204:
        case 2205:
            break;
        default:
            return;
    }

    // 2204 and what continues as it: the text to search.
    QString text = m_searchEdit ? m_searchEdit->text() : QString();
    if (m_page == PageSearch && text.isEmpty()) {
        text = g_defaultHotWord;
        if (m_searchEdit) m_searchEdit->setText(text);
    }
    StartSearch(text);
}

void CBrindleDlg::RunCollectionFilter() {
    QString text = m_searchEdit ? m_searchEdit->text() : QString();
    if (text == m_lastSearch) return;
    m_searchRuns.clear();
    m_searchUntouched = false;
    if (text.isEmpty()) return;
    m_lastSearch = text;
    if (!m_store || !m_store->root) return;
    // Rows still on their way: the filter runs when they land.
    if (m_collectionRowsPending) return;
    FilterCollectionRows();
}

void CBrindleDlg::FilterCollectionRows() {
    SetShown(m_searchList, false);
    m_rows.clear();
    m_serverRows.clear();
    m_searchState = 0;

    m_lastSearch = m_lastSearch.toLower();
    for (const BlockRow& row : m_collectionRows) {
        if (!row.name.toLower().contains(m_lastSearch)) continue;
        BlockRow hit = row;
        hit.state = FileExists(S(hit.path)) ? RowCollected : RowRemote;
        m_serverRows.push_back(std::move(hit));
    }
    if (!m_serverRows.empty()) {
        PostWindowMessage(Handle(), MsgPanelCommand, 16, 0);
        m_searchState = 0;
    } else {
        m_searchState = 3;
    }
    repaint(ScaleRect(8, 68, 574, 288));
    repaint(ScaleRect(10, 427, 760, 447));
    PostWindowMessage(Handle(), MsgPanelCommand, 17, 0);
}

// ---- panel buttons -----------------------------------------------------------

void CBrindleDlg::OnPanelButton(int id) {
    switch (id) {
        case 2150:
            OnButton(2100);
            return;
        case 2151: {
            if (!m_classList || m_classIndex < 0 || m_classIndex >= m_classList->GetItemCount()) return;
            if (m_galleryFetchPending || !m_store) return;  // one download at a time
            const std::u16string name = S(m_classList->GetItemText(m_classIndex));
            // The gallery comes on a worker; its arrival (or failure) carries on.
            std::optional<TreeRequest> request = PrepareGalleryFull(*m_store, name, false);
            if (request && StartTreeRequest(*m_store, std::move(*request))) {
                m_galleryFetchPending = true;
                if (CSkinButton* download = Button(2151)) download->setEnabled(false);
                return;
            }
            CPopTipDlg tip(this);
            tip.Configure(QStringLiteral("Ombrel"), false, QStringLiteral("下载图库失败，请检查网络后重试"), QString(),
                          QStringLiteral("确定"), QString());
            (void)tip.DoModal();
            SetTimer(Handle(), kTimerBuildClassList, kClassListMs);
            return;
        }
        case 2153:
            FeedbackButton();
            return;
        case 2154:
            StatisticsButton();
            return;
        case 2155:
            ReplaceCloudButton();
            return;
        case 2157:
            ReloadCollection([this](int reloaded) { ContinueCollectionSwitch(-2, reloaded); });
            return;
        case 2156:
            (void)WriteOldCollectTip(u"1");  // a failed write only brings the notice back
            m_forceList = true;
            SelectClass(1, false);
            return;
        case 2158:
            GoToPage(PageSearch);
            return;
        case 2002:
            ManageClasses();
            return;
        default:
            return;
    }
}

}  // namespace marrowfin
