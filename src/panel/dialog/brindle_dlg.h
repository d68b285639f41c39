#pragma once
// CBrindleDlg: the floating gallery panel. One instance per process, made by
// the first export that needs it and never destroyed while the host runs;
// closing only hides it. It owns every widget of the gallery and is the one
// place where workers report back (by posted window messages). Its state is
// held by plain models that decide without widgets: navigation (m_nav), the
// search pages (m_search), the collection (m_collection) and the thumbnail
// queue (m_thumbs); the panel applies their answers and paints them.
//
// Where the members live:
//   brindle_dlg.cpp          construction, Create, OnInitDialog, message dispatch
//   brindle_controls.cpp     the control table
//   brindle_input.cpp        PreTranslateMessage, the title drag and click regions
//   brindle_host_link.cpp    GalleryPanelControl, copy-data, the location step,
//                            RequireLogin, the feedback wait, IsBlkBoutique
//   brindle_events.cpp       timers, MsgPanelEvent
//   class_switch.cpp         the class column and the class switch
//   subclasses.cpp           the subclass buttons and what they list
//   pages.cpp                the pages
//   routes.cpp               routes and target classes
//   search_commands.cpp      the search page's commands, the collection filter
//   panel_buttons.cpp        the empty states, title bar and sync prompt buttons
//   brindle_commands.cpp     MsgPanelCommand
//   collection_rows.cpp      the collection search page's rows as they come back
//   collection_road.cpp      the collection's folders, blocks, mirror files, deletions
//   collection_sync_road.cpp the hand-over of the old local collection
//   search_road.cpp          the search run, its staged rows, the local fallback
//   row_commands.cpp         result rows: thumbnails, downloads, "使用"
//   collection_dialog_road.cpp the collection's menus and dialogs, "收藏" of a row
//   ad_tiles_road.cpp        the advertising tiles: refresh, first cell, click, save

#include <QImage>
#include <QMenu>
#include <QPointer>
#include <QWidget>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "collection/ad_tiles.h"
#include "collection/cloud_replacement.h"
#include "collection/collection_folders.h"
#include "collection/collection_mirror.h"
#include "panel/classes/class_table.h"
#include "panel/model/block_row.h"
#include "panel/model/collection_model.h"
#include "panel/model/navigation_model.h"
#include "panel/model/panel_messages.h"
#include "panel/model/panel_page.h"
#include "panel/model/search_model.h"
#include "panel/model/thumbnail_queue.h"
#include "panel/preview/preview_loader.h"
#include "picker/sel_class_dlg.h"
#include "platform/window_messages.h"
#include "search/row_downloads.h"
#include "store/node_list.h"

class QLineEdit;

namespace marrowfin {

struct GalleryNode;
struct GalleryStore;
class CClassListCtrl;
class CDWGListView;
class CSearchListCtrl;
class CSkinButton;
class CSubclassButton;
class HotWordBar;
class CProgressCtrlOwner;
struct SearchOutcome;
class CAddBlocksFromDisk;

class CBrindleDlg : public QWidget {
    Q_OBJECT
public:
    CBrindleDlg();
    ~CBrindleDlg() override;

    // Makes the window (frameless, a tool window of `parent` when given) and
    // runs OnInitDialog. Once only.
    bool Create(QWidget* parent);
    WindowHandle Handle();

    // ---- host link ------------------------------------------------------
    WindowHandle hostWindow = 0;
    std::u16string showMode;
    int32_t userId = -1;
    std::u16string userToken;
    std::u16string m_hostChannel;  // answer to GalleryHostRequest 7

    // ---- owned widgets --------------------------------------------------
    // Their ids are in panel_numbers.h (ControlId).
    CDWGListView* m_pThumbList = nullptr;
    CSearchListCtrl* m_searchList = nullptr;
    CClassListCtrl* m_classList = nullptr;
    QLineEdit* m_searchEdit = nullptr;
    CProgressCtrlOwner* m_progress = nullptr;
    std::map<int, CSkinButton*> m_buttons;  // close, add classes, empty states, title bar, sync prompt
    std::vector<CSubclassButton*> m_subclassBtns;  // two rows of nine
    std::vector<CSkinButton*> m_collectionBtns;  // the collection bar in id order
    std::vector<CSkinButton*> m_searchBtns;  // clear, search, back
    HotWordBar* m_hotWordBar = nullptr;

    // ---- navigation -----------------------------------------------------
    NavigationModel m_nav;  // page, class, subclass, listed blocks, selection
    bool m_treeWaiting = false;  // opened before the first tree came: its arrival continues the start
    GalleryStore* m_store = nullptr;

    // ---- search and downloads -------------------------------------------
    SearchModel m_search;  // runs, result rows, downloads, the collection's rows
    // Written by the download workers, which hold it beyond the panel's life.
    std::shared_ptr<ActiveRowDownloads> m_activeDownloads = std::make_shared<ActiveRowDownloads>();
    std::map<std::u16string, uint8_t> m_boutiqueCache;

    // ---- collections ----------------------------------------------------
    CollectionModel m_collection;  // folders, reloads, folder reads, requests pending

    // ---- thumbnails -----------------------------------------------------
    ThumbnailQueue m_thumbs;  // items reported missing, the collections' files waiting and running

    // ---- advertising tiles ---------------------------------------------
    AdTileMap m_adTiles;  // by class name; replaced whole when the refresh comes
    std::map<std::u16string, QImage> m_adPictures;  // decoded pictures of the tiles that are on

    // ---- class table ----------------------------------------------------
    ClassTable m_classTable;
    KindMap& m_generalKinds = m_classTable.generalKinds;
    KindMap& m_boutiqueKinds = m_classTable.boutiqueKinds;
    ClassTableVersions m_classVersions;  // the table of the start of this run
    std::vector<QString> m_hotWords;
    bool m_showDesc = false;
    bool m_classTableComing = false;  // a first run's table is on its way
    // Reapplies the cached table (timer 1004, command 24).
    void ReapplyClassTable();

    // ---- operations -----------------------------------------------------
    void ShowPanel();  // SW_SHOW
    void HidePanel();
    // CloseGallery's save: lists, advertising file, the folder "search".
    void SaveOnClose();
    // Handles one message as the window procedure would; answers its result.
    std::intptr_t OnMessage(uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                            std::unique_ptr<MessagePayload> payload);
    // The pre-translate walk: true when the message was consumed.
    bool PreTranslateMessage(QObject* receiver, QEvent* event);
    // IsDLLHwnd: the panel, its thumbnail list, search list or class list.
    bool IsOwnWindow(WindowHandle window);

    // Starts a new first tree (F5, a changed gallery list); its arrival rebuilds the class list.
    void RebuildTree();
    // m_nav.listNodes looked up anew for the paths in the thumbnail list, after
    // the tree freed nodes.
    void RelistNodes();

    // MsgPanelCommand and MsgPanelEvent.
    void OnPanelCommand(std::uintptr_t code, std::intptr_t lParam);
    void OnPanelEvent(std::uintptr_t code, std::intptr_t lParam, std::unique_ptr<MessagePayload> payload);

    // The host link.
    std::intptr_t OnPanelControl(std::uintptr_t code, std::intptr_t lParam);
    std::intptr_t OnCopyData(const CopyDataStruct* data);
    void OpenCollectionsForHost();  // ResetClass with "我的收藏"
    void SearchFor(const QString& text);  // SearchBrindleRes, copy-data 414
    bool IsBlkBoutique(const std::u16string& blockPath);
    int RequireLogin();
    // Reads the folder list on a worker and rebuilds the collection's part of
    // the tree; `then` gets 1 (the collection is fresh), 0 (nothing could be
    // read) or 2 (the page is occupied) on the panel's thread. A newer reload
    // drops the `then` of one still on its way.
    void ReloadCollection(std::function<void(int)> then = {});
    // Whether the old local collection lets the collection go on: `then` gets
    // 1 go on, 2 the page is taken by the prompt or a transfer, 0 stop. The
    // service is asked on a worker.
    void CheckOldCollectionThen(std::function<void(int)> then);
    // A request of the collections is on its way to or from the service.
    bool CollectionBusy() const { return m_collection.Busy(); }
    // The newest search run is known and has ended (the result count may show).
    bool SearchEnded() const;
    void FeedbackButton();  // 2153
    void StatisticsButton();  // 2154

    // Navigation.
    void SelectClass(int row, bool highlight);
    void SwitchClass(int row);
    void OpenSubclass(int id);
    void GoToPage(int page);
    void OpenTargetClass();
    // A route of the host (ShowGallery, ResetClass, copy-data) or of the panel
    // (a hot word, a result row's class).
    enum class RouteSource { Panel, Host };
    void OpenRoute(const std::u16string& route, RouteSource source = RouteSource::Panel);
    void SearchCommand(int id);
    // Rebuilds the hot word row from m_hotWords and shows it, or hides it.
    void ShowHotWords(bool show);
    // A hot word names a class: it is added to the shown classes and opened.
    void OpenHotWord(const QString& word);
    void LayoutCollectionBar(bool shown);
    void RebuildClassList();
    // Opens the class manager modal to the panel and returns at once; `then`
    // runs with its result (1 after "完成") and whether it asked for the
    // search page. False (and `then` dropped) while a manager is open.
    // The route's manager shows no descriptions (`withDescriptions` false).
    bool RunClassManager(std::function<void(int result, bool wantSearch)> then, bool withDescriptions = true);
    // Button 2002 and ShowBoutiqueGallery: the manager, then the store
    // reloaded and the list applied, or the search page.
    void ManageClasses();
    // Opens the class of a route, adding it to Show.xml first when it is not
    // listed, within the limit of 101 classes.
    void OpenClassRoute(const std::u16string& route);
    CSelClassDlg* ClassManager() const { return m_manager; }

    // Tests and the tour read these.
    CSkinButton* Button(int id) const;
    // The context menu of the thumbnail list or a folder button while it is open.
    QMenu* CollectionMenu() const { return m_collectionMenu.data(); }
    // The collection's dialog, file dialog or tip while one is open.
    QWidget* CollectionWindow() const { return m_collectionWindow.data(); }

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void OnInitDialog();
    void CreateControls();
    void CreateSearchEdit();
    void CreateButtons(int clientWidth);
    void OnTimer(std::uintptr_t id);
    void OnClassTableRefresh(std::uintptr_t code, std::unique_ptr<MessagePayload> payload);
    // MsgTreeUpdate: adopts what the workers deposited and carries on with it.
    void OnTreeUpdate();
    void OnButton(int id);
    void OnPanelButton(int id);
    void OnCloseButton();

    // Navigation helpers of the navigation files and brindle_commands.cpp.
    // The subclass button opened last (m_nav.openedSubclass), or null.
    CSubclassButton* OpenedSubclass() const;
    void NoteOpenedSubclass(CSubclassButton* button);
    bool m_rebuildingClasses = false;  // command 0 runs: OpenTargetClass must not send it again
    void RebuildAndReopen();  // command 0
    void ApplyShowList(std::intptr_t force);  // command 6
    void SelectionChanged(std::intptr_t item);  // command 1
    void EnableBlockDelete(bool enabled);  // command 5: the bar's "删除图块"
    void RepaintResults();  // command 17
    void GoToRowClass(std::intptr_t row);  // command 23: a result row's class link
    void LayoutStatusButtons();  // event 4
    void SetSyncStatus(int status);  // event 5
    void RefreshClassRows();  // command 19
    void RunCollectionFilter();
    void FilterCollectionRows();
    void LoadCollectionRows();
    // GoToPage's halves on the controls.
    void ShowSearchControls();
    void ShowBrowseControls();
    void OnCollectionRows(std::uintptr_t generation, std::unique_ptr<MessagePayload> payload);

    // The search run (search_road.cpp).
    void StartSearch(QString text);  // the tail of 2204
    void OnSearchOutcome(int generation, std::unique_ptr<MessagePayload> payload);
    void SearchFailed(int generation);  // command 20
    void RunLocalSearch();  // 2203
    void ShowStagedRows();  // command 16
    void ListRows();  // m_search.rows into the list, a new row generation
    // Result rows (row_commands.cpp).
    void RowThumbnail(std::intptr_t row);  // command 9
    void CollectRow(std::intptr_t row);  // command 10
    void UseRow(std::intptr_t row);  // command 11
    void RowDownloadEnded(std::intptr_t id, bool ok);  // commands 12 and 13
    void RowBackToRemote(std::intptr_t row);  // command 14
    void StartRowDownloads();  // command 15
    void NoteRowToCheck(std::intptr_t row);  // command 18
    void CheckShownRows();  // timer 1006
    void RedrawResultRow(int row);
    void OnRowPreview(PreviewResult result);
    std::unique_ptr<PreviewLoader> m_rowPreviews;
    std::vector<PreviewJob> m_rowPreviewJobs;
    uint64_t m_rowGeneration = 0;

    // The collection (collection_road.cpp).
    void OnCollectionBar(int id);  // 2100 to 2105
    // The block of a thumbnail item (a file with a folder), or null.
    GalleryNode* ListedBlockAt(std::intptr_t item);

    // The hand-over of the old local collection (collection_sync_road.cpp).
    HandoverInput HandoverOf() const;
    void StartCloudReplacement();
    void ReplaceCloudButton();  // 2155
    void CloudSyncEnded(bool landed);  // events 6 and 7
    void PollCloudSync();  // timer 1010
    // The node <root>/我的收藏, when the tree has one, read again from the disk.
    void ReloadOldCollection();
    void ReadCollectionFolders(std::uintptr_t generation);
    void AdoptFolderList(FolderListRead read, const std::u16string& mirror);
    void ShowLoadStatus(LoadStep step);
    void EndCollectionLoad(int result);  // hands the result to the newest reload's `then`
    void ContinueCollectionSwitch(int previous, int reloaded);
    // A collection folder's blocks are read on a worker; false when none started.
    bool LoadFolderBlocks(CSubclassButton* button, const std::u16string& path);
    void AdoptFolderBlocks(FolderBlocksRead read, const std::u16string& path);
    void NextCollectionThumb();  // event 3
    void DeleteSelectedBlock();  // 2102
    void BlockDeleted(const std::u16string& folderPath, const std::u16string& blockPath,
                      const std::u16string& blockName);
    void AskDeleteFolder(CSubclassButton* button);  // event 10, 2105

    // The collection's menus and dialogs (collection_dialog_road.cpp). One
    // window at a time: a second request brings the open one forward.
    QPointer<QWidget> m_collectionWindow;
    QPointer<QMenu> m_collectionMenu;
    QPointer<CAddBlocksFromDisk> m_addFromDisk;
    bool CollectionWindowOpen();
    template <class Dialog>
    Dialog* HoldCollectionDialog(Dialog* dialog, std::function<void(Dialog&, int)> then);
    QMenu* PopCollectionMenu(const std::vector<std::pair<QString, int>>& entries, const std::set<int>& disabled,
                             std::function<void(int)> chosen);
    CSubclassButton* SubclassButtonOf(std::intptr_t handle) const;
    int ItemOfPath(const std::u16string& path) const;
    void ThumbnailMenu(std::intptr_t item);  // event 8
    void FolderButtonMenu(std::intptr_t handle);  // event 9
    void MoveBlock(std::intptr_t item);  // event 11
    void RenameFolder(std::intptr_t handle);  // command 2
    void RenameBlock(std::intptr_t item);  // command 4
    void AddBlocksFromDisk();  // 2100, 2150
    void NewFolder();  // 2101
    void ShareCollection();  // 2103
    void CollectListedBlock(const std::u16string& path);
    bool HostAllowsCollecting(const std::u16string& path);
    // CCollectiondlg, then m_search.collected and the success tip; `closed` runs on its "关闭".
    void OpenCollectDialog(const std::u16string& name, const std::u16string& path, const QImage& picture,
                           std::function<void()> closed);
    void FolderRenamed(const std::u16string& oldPath, const std::u16string& newPath, const std::u16string& newName,
                       WindowHandle buttonHandle);
    void BlockRenamed(const std::u16string& oldPath, const std::u16string& newPath, const std::u16string& fileName);
    void FolderMade(const std::u16string& parentPath, const std::u16string& name);
    void ShowEmptyClass(int row, const std::u16string& path);
    // SwitchClass's steps: the old class cleared, the recent list listed.
    void ClearForSwitch(int row);
    void ListRecentBlocks(int row);
    // SwitchClass's half for a row whose class is known: its subclasses shown.
    void ShowClassOf(int row, const std::u16string& text);
    // The halves of SwitchClass and OpenSubclass after the service was asked;
    // a fetch under way continues them when its update is adopted.
    void ShowGalleryClasses(int row, const std::u16string& path);
    void ListSubclass(CSubclassButton* button, const std::u16string& path);
    bool m_galleryFetchPending = false;  // button 2151
    void PlaceThumbList(int entries);
    bool ClassIsBoutique(const std::u16string& path) const;

    QPointer<QWidget> m_parent;
    QPointer<CSelClassDlg> m_manager;
    // A route's class added to Show.xml and asked for: its arrival opens it.
    std::u16string m_routeGallery;
    std::u16string m_routeTarget;
    void ContinueClassRoute(const std::u16string& route, const std::u16string& name, bool secondRound);
    bool m_created = false;

    // Input state of brindle_input.cpp: Qt reports Control as a modifier but
    // not Tab, so Tab's press and release are tracked here; the title drag by
    // hand when the platform refuses a system move.
    bool m_tabDown = false;
    bool m_dragging = false;
    QPoint m_dragOffset;
    bool DragEvent(QEvent* event);
};

// CDomodalDlg: the invisible wait while the host's feedback form is open.
// Runs until `userId` leaves -2 or the host window is gone; every third tick
// of its 800 ms timer posts GalleryHostNotice 14.
int RunFeedbackWait(CBrindleDlg& panel);

}  // namespace marrowfin
