#pragma once
// The panel's numbers, each named once: its own window messages, the commands
// and events that MsgPanelCommand and MsgPanelEvent carry, its timers with
// their periods, and the ids of its controls. Nothing but numbers, so that
// the pickers, which post commands to the panel, speak the same protocol
// without depending on the panel's windows. What the skin's buttons post is
// the skin's (skin/skin_messages.h), reopened here.
//
// Numbers that a lower layer posts stay with it: MsgFileReady and MsgProgress
// (net), MsgTreeUpdate (store); the host's messages are in marrowfin/marrowfin.h.

#include <cstdint>

#include "skin/skin_messages.h"  // MsgPanelCommand, MsgPanelEvent and the folder button's codes

namespace marrowfin {

// ---- window messages -------------------------------------------------------

inline constexpr uint32_t MsgListRefresh = 0x8b0;  // redraw one thumbnail item
// A class-table worker to the panel; wParam says what came.
inline constexpr uint32_t MsgClassTableRefresh = 0x9e4;
// wParam: the generation of the load; payload: CollectionRowsPayload (empty
// rows when the request failed or the answer holds no root).
inline constexpr uint32_t MsgCollectionRows = 0x9e5;
// The class manager's reload worker to the manager: the service's answer
// (empty when the request failed).
inline constexpr uint32_t MsgManagerTableFetched = 0x9e6;
// wParam: the run's generation; payload: SearchOutcomePayload.
inline constexpr uint32_t MsgSearchOutcome = 0x9e7;
// The advertising tiles' refresh worker: the new map and pictures.
inline constexpr uint32_t MsgAdTiles = 0x9e8;
// A worker's answer: the receiving window runs `deliver` on its own thread.
inline constexpr uint32_t MsgWorkerAnswer = 0x9ea;

// ---- MsgPanelCommand codes (every command answers 0) -----------------------

namespace PanelCommand {
inline constexpr std::uintptr_t RebuildClassList = 0;  // rebuild the class list, reopen the class
inline constexpr std::uintptr_t SelectionChanged = 1;  // item index or -1
// RenameFolder = 2: the skin's, posted by a folder's button
inline constexpr std::uintptr_t ActivateBlock = 3;  // item index: insert the block
inline constexpr std::uintptr_t RenameBlock = 4;  // item index: rename a collected block
inline constexpr std::uintptr_t EnableBlockDelete = 5;  // 0 enables "删除图块", below 0 disables it
inline constexpr std::uintptr_t ApplyShowList = 6;  // 0, or 1 to force: Show.xml onto the tree
inline constexpr std::uintptr_t OpenTargetClass = 8;
inline constexpr std::uintptr_t RowShown = 9;  // result row: the list's cache hint
inline constexpr std::uintptr_t CollectRow = 10;
inline constexpr std::uintptr_t UseRow = 11;
inline constexpr std::uintptr_t RowDownloaded = 12;  // download id
inline constexpr std::uintptr_t RowDownloadFailed = 13;  // download id
inline constexpr std::uintptr_t RowBackToRemote = 14;
inline constexpr std::uintptr_t StartRowDownloads = 15;
inline constexpr std::uintptr_t ShowStagedRows = 16;
inline constexpr std::uintptr_t RepaintResults = 17;
inline constexpr std::uintptr_t RowDrawn = 18;  // result row: its display data asked for
inline constexpr std::uintptr_t RefreshClassRows = 19;
inline constexpr std::uintptr_t SearchFailed = 20;  // search generation
inline constexpr std::uintptr_t ClassClicked = 21;  // class list row
inline constexpr std::uintptr_t ThumbClicked = 22;  // item index: an advertising tile's address
inline constexpr std::uintptr_t GoToRowClass = 23;  // result row
inline constexpr std::uintptr_t NewSort = 24;  // reapply the class table and refresh it
// Inside the class manager: the sort selector asks its picker to reorder.
inline constexpr std::uintptr_t PickerReapplyOrder = 1000;
}  // namespace PanelCommand

// ---- MsgPanelEvent codes -----------------------------------------------------

namespace PanelEvent {
inline constexpr std::uintptr_t ThumbMissing = 0;  // item index: restart the quiet timer
inline constexpr std::uintptr_t ThumbDone = 1;  // owned path
inline constexpr std::uintptr_t ThumbFailed = 2;  // owned path
inline constexpr std::uintptr_t NextThumb = 3;  // start the next collection thumbnail
inline constexpr std::uintptr_t LayoutStatus = 4;  // the collection page's status buttons
inline constexpr std::uintptr_t SyncStatus = 5;  // lParam: the new m_nav.syncStatus
inline constexpr std::uintptr_t SyncDone = 6;  // the cloud replacement landed
inline constexpr std::uintptr_t SyncFailed = 7;
inline constexpr std::uintptr_t ThumbMenu = 8;  // item index
// FolderMenu = 9: the skin's, posted by a folder's button
inline constexpr std::uintptr_t DeleteFolder = 10;  // the folder button
inline constexpr std::uintptr_t MoveBlock = 11;  // item index
}  // namespace PanelEvent

// ---- timers ------------------------------------------------------------------
// One-shot timers kill themselves first in their handler; whoever wants the
// work done restarts them, so that a burst of requests ends in one action.

inline constexpr std::uintptr_t kTimerFeedbackWait = 1001;  // the feedback wait's 800 ms tick
inline constexpr std::uintptr_t kTimerClassTableApply = 1004;  // one-shot, 100 ms
inline constexpr std::uintptr_t kTimerHourlyRefresh = 1005;  // periodic until it refreshes
inline constexpr std::uintptr_t kTimerRowCheck = 1006;  // one-shot, 700 ms
inline constexpr std::uintptr_t kTimerRightStrip = 1007;  // one-shot, 1000 ms (400 on attach)
inline constexpr std::uintptr_t kTimerThumbRequest = 1008;  // one-shot, 500 ms
inline constexpr std::uintptr_t kTimerSyncPoll = 1010;  // periodic until the sync ends
inline constexpr std::uintptr_t kTimerBuildClassList = 1011;  // one-shot, 150 ms (250 at start)
inline constexpr std::uintptr_t kTimerClassSwitch = 2000;  // one-shot, 350 or 100 ms
inline constexpr std::uintptr_t kTimerRepaintAll = 2001;  // one-shot, 1200 ms
inline constexpr std::uintptr_t kTimerRowUse = 2002;  // one-shot, 300 ms
inline constexpr std::uintptr_t kTimerRowCollect = 2003;  // one-shot, 300 ms
inline constexpr std::uintptr_t kTimerRowClassLink = 2004;  // one-shot, 200 ms

inline constexpr unsigned kHourlyRefreshMs = 3600000;
inline constexpr unsigned kClassTableApplyMs = 100;
inline constexpr unsigned kRowCheckMs = 700;  // a row must stay in view this long to be fetched
inline constexpr unsigned kRowClickMs = 300;  // use and collect wait out a double click
inline constexpr unsigned kRowClassLinkMs = 200;
inline constexpr unsigned kRightStripMs = 1000;
inline constexpr unsigned kRightStripAttachMs = 400;
inline constexpr unsigned kThumbRequestMs = 500;
inline constexpr unsigned kSyncPollMs = 5000;
inline constexpr unsigned kFirstClassListMs = 250;
inline constexpr unsigned kClassListMs = 150;
inline constexpr unsigned kRouteRebuildMs = 250;
inline constexpr unsigned kSlowSwitchMs = 350;
inline constexpr unsigned kQuickSwitchMs = 100;
inline constexpr unsigned kRepaintAllMs = 1200;
inline constexpr unsigned kFeedbackWaitMs = 800;

// ---- control ids -------------------------------------------------------------

namespace ControlId {
inline constexpr int Close = 1000;
inline constexpr int SearchList = 1007;
inline constexpr int ClassList = 1008;
inline constexpr int AddClasses = 2002;  // "添加更多分类"
inline constexpr int FirstSubclass = 2080;  // 18 buttons in two rows of nine: 2080 to 2097
inline constexpr int SubclassButtons = 18;
inline constexpr int LastSubclassRange = 2099;  // the click range the panel answers
inline constexpr int AddBlocks = 2100;  // collection bar: "添加图块"
inline constexpr int NewFolder = 2101;  // "新建文件夹"
inline constexpr int DeleteBlock = 2102;  // "删除图块"
inline constexpr int ShareCollection = 2103;  // "分享收藏"
inline constexpr int SearchCollection = 2104;  // "搜索收藏"
inline constexpr int DeleteFolder = 2105;  // "删除文件夹"
inline constexpr int LastCollectionRange = 2110;
inline constexpr int AddBlocksEmpty = 2150;  // "添加图块" on an empty collection
inline constexpr int DownloadGallery = 2151;  // "下载图库"
inline constexpr int Feedback = 2153;  // title bar "反馈"
inline constexpr int Statistics = 2154;  // title bar "统计"
inline constexpr int ReplaceCloud = 2155;  // sync prompt "替换"
inline constexpr int KeepCloud = 2156;  // sync prompt "不替换"
inline constexpr int RetrySync = 2157;  // sync prompt "重试"
inline constexpr int OpenSearch = 2158;  // title bar "搜索"
inline constexpr int ClearSearch = 2200;
inline constexpr int Search = 2201;  // "搜索", and Enter in the edit
inline constexpr int SearchBack = 2202;  // "返回"
inline constexpr int LocalSearch = 2203;  // the fallback when the service failed
inline constexpr int StartSearch = 2204;
inline constexpr int SearchFromHost = 2205;  // as 2204, never damped
inline constexpr int ThumbList = 2213;
inline constexpr int SearchEdit = 3000;
inline constexpr int Progress = 3000;  // the bar never notifies, so it shares the edit's id
inline constexpr int HotWordLabel = 4000;  // hot words follow it: 4001 to 4032
inline constexpr int HotWords = 32;
}  // namespace ControlId

}  // namespace marrowfin
