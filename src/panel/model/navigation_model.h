#pragma once
// Where the panel stands: the page, the class row and subclass shown, the
// blocks listed and the selection, with the decisions of navigation as plain
// operations over them and over the gallery tree. No widgets: CBrindleDlg
// forwards input here, applies what an operation answers to its controls,
// runs the timers and paints this state; tests drive it without a window.

#include <QString>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "panel/model/block_row.h"
#include "panel/model/panel_page.h"
#include "store/node_list.h"

namespace marrowfin {

struct GalleryNode;
struct GalleryStore;

// One subclass button as a class fills it.
struct SubclassEntry {
    std::u16string data;  // the path the button opens
    std::u16string caption;
    std::u16string tip;
    bool boutique = false;
};

struct SubclassPlan {
    std::vector<SubclassEntry> buttons;  // at most one per button, in order
    size_t chosen = 0;  // the button the switch opens
    int entries = 0;  // "常用" and every class, shown or not
};

// What GoToPage has to do to the controls.
enum class PageMove { None, EnterSearch, EnterCollectionSearch, LeaveSearch };

// A target class found in the tree: its full path and the class row to select.
struct TargetRow {
    std::u16string path;
    std::u16string rowName;  // "最近使用", "我的收藏" or a gallery
};

class NavigationModel {
public:
    int page = PageBrowse;
    int classIndex = -1;  // the class row shown
    int pendingClass = -1;  // the row the switch timer opens
    bool slowSwitch = true;  // the next selection waits long: one came just before
    std::u16string curClassPath;  // the class (or gallery) whose blocks are listed
    std::u16string targetClass;  // a route's class, opened by the next switch
    QString selectedName;  // the selected block's name, for the status line
    bool forceList = false;  // the open subclass lists again when pressed
    int itemCount = 0;  // the subclass buttons or the blocks on show
    NodeList listNodes;  // the blocks in the thumbnail list, by item
    bool classesReady = false;  // the class list has been built once
    int syncStatus = -1;  // the collection page's hand-over state
    bool emptySubclassOpened = false;  // paint: "暂无图块" rather than "常用为空"
    int openedSubclass = -1;  // the subclass button opened last, by slot
    // A fetch on its way: its arrival shows the gallery's classes or the class's blocks.
    std::u16string summaryPending;
    std::u16string itemsPending;
    // A result row's class link: the row selected once its class is listed.
    BlockRow focusRow;
    bool focusPending = false;

    // SelectClass: `row` waits for the switch timer; answers the delay to
    // (re)start it with. A burst of selections ends in one switch.
    unsigned SelectClass(int row);
    // The switch timer fired: the row to switch to; the next selection is quick.
    int TakePendingClass();
    // SwitchClass's state step: the old class's list and status go, the page
    // follows the row.
    void BeginSwitch(int row, const GalleryStore& store);

    // Presses of subclass buttons within 350 ms of the last accepted one are
    // dropped; `now` is a tick.
    bool AcceptSubclassPress(uint32_t now);
    // The next opening counts whatever the time: a switch's own opening is no press.
    void ExemptNextSubclassPress() { m_subclassTicked = false; }
    // Search commands within 450 ms of the last accepted one are dropped,
    // except the search itself and the host's, which clear the memory first.
    bool AcceptSearchCommand(int id, uint32_t now);

    // GoToPage's state step; `collectionRow` whether the collections are the
    // class shown. Answers what the controls must do.
    PageMove GoToPage(int newPage);

    // The collection page's status buttons for `syncStatus` while the page
    // is empty (ControlId values); none elsewhere.
    std::vector<int> StatusButtons() const;

private:
    uint32_t m_subclassTick = 0;
    bool m_subclassTicked = false;
    uint32_t m_searchTick = 0;
    bool m_searchTicked = false;
};

// The tip of a subclass button: the name behind the first "..", unless the
// name starts with it.
std::u16string SubclassTip(std::u16string_view name);

// The subclass buttons of a class row's node: on a gallery row (`galleryRow`)
// "常用" first when it has common-use entries, then the classes in order, as
// many as there are buttons. The button whose path is `target` is chosen,
// else the first. A class is marked boutique by `isBoutique` unless "常用" leads.
SubclassPlan PlanSubclasses(const GalleryNode& node, bool galleryRow, const std::u16string& target,
                            const std::function<bool(const std::u16string&)>& isBoutique);

// A route's target ("/gallery", "/gallery/class", "/我的收藏/folder", with
// the collection already replaced by the mirror's name) looked up under
// `root`: nothing when it is missing or deeper than a class.
std::optional<TargetRow> FindTargetRow(const GalleryNode& root, const std::u16string& target);

// The class row showing `name` among the rows' texts: 0 for "最近使用", 1 for
// "我的收藏", else the first row with the text; -1 when none.
int ClassRowOf(const std::u16string& name, const std::vector<std::u16string>& rows);

}  // namespace marrowfin
