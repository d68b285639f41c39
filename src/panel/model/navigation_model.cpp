#include "panel/model/navigation_model.h"

#include "panel/model/panel_numbers.h"
#include "platform/product_texts.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"

namespace marrowfin {

namespace {

// Rapid presses are damped by tick differences: a press counts only when
// more than this many ticks have passed since the last accepted one.
constexpr uint32_t kSubclassQuietMs = 350;
constexpr uint32_t kSearchQuietMs = 450;

bool AcceptPress(uint32_t now, uint32_t quietMs, uint32_t& tick, bool& ticked) {
    // Unsigned difference: the tick count wraps.
    if (ticked && now - tick <= quietMs) return false;
    tick = now;
    ticked = true;
    return true;
}

}  // namespace

unsigned NavigationModel::SelectClass(int row) {
    pendingClass = row;
    const unsigned delay = slowSwitch ? kSlowSwitchMs : kQuickSwitchMs;
    slowSwitch = true;
    return delay;
}

int NavigationModel::TakePendingClass() {
    slowSwitch = false;
    return pendingClass;
}

void NavigationModel::BeginSwitch(int row, const GalleryStore& store) {
    syncStatus = -1;
    listNodes.Reset(store);
    summaryPending.clear();
    itemsPending.clear();
    forceList = false;
    page = row == 1 ? PageCollection : PageBrowse;
    curClassPath.clear();
    itemCount = 0;
    emptySubclassOpened = false;
}

bool NavigationModel::AcceptSubclassPress(uint32_t now) {
    return AcceptPress(now, kSubclassQuietMs, m_subclassTick, m_subclassTicked);
}

bool NavigationModel::AcceptSearchCommand(int id, uint32_t now) {
    if (id == ControlId::Search || id == ControlId::SearchFromHost) m_searchTicked = false;
    return AcceptPress(now, kSearchQuietMs, m_searchTick, m_searchTicked);
}

PageMove NavigationModel::GoToPage(int newPage) {
    if (IsSearchPage(newPage) && newPage != page) {
        page = newPage;
        return newPage == PageSearch ? PageMove::EnterSearch : PageMove::EnterCollectionSearch;
    }
    if (!IsSearchPage(newPage) && IsSearchPage(page)) {
        // Back to the page of the class row that was left.
        page = classIndex == 1 ? PageCollection : PageBrowse;
        return PageMove::LeaveSearch;
    }
    return PageMove::None;
}

std::vector<int> NavigationModel::StatusButtons() const {
    if (classIndex != 1 || itemCount > 0) return {};
    switch (syncStatus) {
        case -1: return {ControlId::AddBlocksEmpty};
        case 0: return {ControlId::ReplaceCloud, ControlId::KeepCloud};
        case 3:
        case 4: return {ControlId::RetrySync};
        default: return {};
    }
}

std::u16string SubclassTip(std::u16string_view name) {
    const size_t dots = name.find(u"..");
    if (dots != std::u16string_view::npos && dots > 0) return std::u16string(name.substr(dots + 2));
    return std::u16string(name);
}

SubclassPlan PlanSubclasses(const GalleryNode& node, bool galleryRow, const std::u16string& target,
                            const std::function<bool(const std::u16string&)>& isBoutique) {
    SubclassPlan plan;
    bool common = false;
    if (galleryRow)
        for (const GalleryNode* entry : node.fileChildren) common = common || entry != nullptr;
    auto add = [&](SubclassEntry entry) {
        if (!target.empty() && entry.data == target) plan.chosen = plan.buttons.size();
        plan.buttons.push_back(std::move(entry));
    };
    if (common) add({node.Path(), kCommonText, kCommonText, false});
    int classes = 0;
    for (const GalleryNode* child : node.dirChildren) {
        if (!child) continue;
        ++classes;
        if (static_cast<int>(plan.buttons.size()) >= ControlId::SubclassButtons) continue;
        const std::u16string path = child->Path();
        add({path, child->name.str(), SubclassTip(child->name.view()), !common && isBoutique && isBoutique(path)});
    }
    plan.entries = classes + (common ? 1 : 0);
    return plan;
}

std::optional<TargetRow> FindTargetRow(const GalleryNode& root, const std::u16string& target) {
    auto& tree = const_cast<GalleryNode&>(root);  // the lookup only reads
    GalleryNode* node = FindNodeByPath(&tree, root.Path() + target);
    if (!node) return std::nullopt;
    TargetRow found{root.Path() + target, {}};
    // A class row is a child of the root; a subclass its grandchild. Deeper
    // nodes have no row.
    if (const GalleryNode* parent = node->parent) {
        if (parent == &root) found.rowName = node->name.str();
        else if (parent->parent == &root) found.rowName = parent->name.str();
    }
    return found;
}

int ClassRowOf(const std::u16string& name, const std::vector<std::u16string>& rows) {
    if (name == kCollectionText) return 1;
    if (name == kRecentText) return 0;
    for (size_t i = 0; i < rows.size(); ++i)
        if (rows[i] == name) return static_cast<int>(i);
    return -1;
}

}  // namespace marrowfin
