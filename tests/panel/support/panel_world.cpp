#include "panel_world.h"

#include "collection/collection_calls.h"

#include "panel/classes/panel_workers.h"
#include "skin/pop_tip_dlg.h"

namespace marrowfin::test {

namespace {

void FreeTree(GalleryNode*& root) {
    if (root) DestroySubtree(root);
    delete root;
    root = nullptr;
}

}  // namespace

void PanelHarness::Serve(const std::string& library) {
    galleries = GalleryNames(library);
    service = StartLiveService(library);
    // The sample's tiles would take the first cell of its first galleries
    // once their refresh lands; the tiles' own tests serve them.
    service.faults().set("/gallery/gad", {.body = "<root></root>"});
}

void PanelHarness::DestroyPanel() {
    if (panel) panel->hide();
    panel.reset();
    // A held answer would keep a worker for its whole bound.
    if (service.ok()) {
        service.faults().clearAll();
        service.faults().releaseHeld();
    }
    (void)WaitForPanelWorkers(std::chrono::seconds(30));
}

void PanelHarness::ClickButton(int id, int laterMs) {
    if (laterMs) ShiftTicksForTest(laterMs);
    if (CSkinButton* button = panel->Button(id)) Click(button, button->rect().center());
}

bool PanelHarness::WaitForSwitch(int timeoutMs) {
    const WindowHandle h = panel->Handle();
    // Posted commands first: one of them may start the switch timer the other one's tick asked for.
    const bool ok = PumpUntil(
        [&] {
            QCoreApplication::sendPostedEvents();
            return !IsTimerRunning(h, kTimerClassSwitch) && !IsTimerRunning(h, kTimerBuildClassList) && !panel->CollectionBusy();
        },
        timeoutMs);
    Pump(30);  // the commands the switch posted
    return ok;
}

int PanelHarness::RowOf(const std::u16string& text) const {
    for (int i = 0; i < panel->m_classList->GetItemCount(); ++i)
        if (panel->m_classList->GetItemText(i) == QString::fromStdU16String(text)) return i;
    return -1;
}

SampleWorld::SampleWorld(const WorldOptions& options) {
    ResetGalleryStore();
    Serve(SampleLibrary());
    WriteOptionString(u"Rate", u"1");
    if (options.listGallery && !galleries.empty()) AddGalleryToShowList(galleries[0]);
    if (options.beforeCreate) options.beforeCreate(*this);
    if (options.firstSync) {
        BuildFirstTree(GalleryStore::Instance());
        (void)AdoptTreeUpdates(GalleryStore::Instance());
    }
    SetApplicationMainWindow(options.attachHost ? &host : nullptr);
    panel = std::make_unique<CBrindleDlg>();
    panel->Create(options.parentIsHost ? &host : nullptr);
}

SampleWorld::~SampleWorld() {
    DestroyPanel();
    SetApplicationMainWindow(nullptr);
    ResetGalleryStore();
}

OwnedStore::~OwnedStore() {
    // Download workers report into this store until they return.
    (void)WaitForDownloadWorkers(std::chrono::seconds(10));
    (void)WaitForReleases();
    FreeTree(root);
}

PanelWorld::PanelWorld(const std::string& library) {
    if (library.empty()) {
        WriteOptionString(u"ServiceBase", u"http://127.0.0.1:9");
    } else {
        Serve(library);
    }
    store.root = new GalleryNode();
    store.root->name = kRootName;
    store.root->SetPath(StoreRoot());
    store.root->kind = NodeKind::Dir;
    CreateDirectories(store.root->Path());
}

PanelWorld::~PanelWorld() { DestroyPanel(); }

GalleryNode* PanelWorld::AddGallery(const GallerySpec& spec) {
    AddGalleryToShowList(spec.name);
    auto* gallery = new GalleryNode(kRootName, root()->Path() + u"/" + spec.name, spec.name, kKindDir, false, spec.boutique, 0);
    gallery->refreshTick = GetTickCount();  // fresh: no summary request on opening
    AddChild(root(), gallery, false);
    CreateDirectories(gallery->Path());
    for (int c = 0; c < spec.classes; ++c)
        AddClass(gallery, u"类" + std::u16string(1, char16_t(u'A' + c % 26)) + (c >= 26 ? u"2" : u""), spec.blocksPerClass);
    for (int e = 0; e < spec.commonEntries; ++e) {
        const GalleryNode* cls = gallery->dirChildren.empty() ? nullptr : gallery->dirChildren[0];
        const std::u16string name = u"常用" + std::u16string(1, u'0' + e);
        AddChild(
            gallery,
            new GalleryNode(kCommonUseTag, (cls ? cls->Path() : gallery->Path()) + u"/" + name + u".dwg", name, kKindFile, false, false, 0),
            false);
    }
    return gallery;
}

GalleryNode* PanelWorld::AddClass(GalleryNode* gallery, const std::u16string& name, int blocks) {
    auto* cls = new GalleryNode(gallery->name, gallery->Path() + u"/" + name, name, kKindDir, false, false, 0);
    cls->version = 1;
    AddChild(gallery, cls, false);
    for (int b = 0; b < blocks; ++b) {
        const std::u16string file = name + u"_" + std::u16string(1, char16_t(u'0' + b % 10)) +
                                    (b >= 10 ? std::u16string(1, char16_t(u'0' + b / 10)) : u"") + u".dwg";
        AddChild(cls, new GalleryNode(name, cls->Path() + u"/" + file, file, kKindFile, false, gallery->boutique, 2048), false);
    }
    return cls;
}

void PanelWorld::AddRecent(const std::u16string& path) {
    std::u16string stem = path.substr(path.rfind(u'/') + 1);
    stem = stem.substr(0, stem.size() - 4);
    AddChild(root(), new GalleryNode(kRootName, path, stem, kKindFile, false, false, 0), false);
}

std::u16string PanelWorld::AddCollections(int user, const std::vector<std::u16string>& folders, int blocksPerFolder) {
    if (!service.ok()) {
        // Only the collections are served; every other request fails as
        // against a closed port, so the rest of the world stays offline.
        Serve(SampleLibrary());
        service.faults().set("*", {.status = 503});
        for (const char* path :
             {"/gallery/get_u_collect", "/gallery/get_u_f", "/gallery/favorite", "/gallery/favorite_dwgs", "/gallery/dwg_collect",
              "/gallery/dwg_collectu", "/gallery/mvff", "/gallery/cdwgrn", "/gallery/lfstatu", "/ufiles/*"})
            service.faults().set(path, service::Fault{});
    }
    service::UserState& users = service.users();
    // The sample's state outlives a test within one program.
    if (!users.userExists(user)) users.addUser(user, "token-" + std::to_string(user));
    (void)users.clearCollection(user);
    for (const std::u16string& folder : folders) {
        int64_t id = 0;
        users.addFolder(user, Utf16ToUtf8(folder), &id);
        for (int b = 0; b < blocksPerFolder; ++b)
            users.addBlock({0, id, Utf16ToUtf8(folder) + "_" + std::to_string(b) + ".dwg", Utf16ToUtf8(folder), 2048, false});
    }
    return NumberedCollectionFolder(user);
}

void PanelWorld::WriteBlockFiles(const GalleryNode* node, const std::string& bytes) {
    CreateDirectories(node->Path());
    for (const GalleryNode* file : node->fileChildren) WriteFileAtomic(file->Path(), bytes);
    for (const GalleryNode* dir : node->dirChildren) WriteBlockFiles(dir, bytes);
}

void PanelWorld::CollectDrawing(int user, const std::string& folder, const std::string& name) {
    const std::string dir = Utf16ToUtf8(StoreRoot()) + "/../upload";
    CreateDirectories(Utf8ToUtf16(dir));
    ASSERT_TRUE(WriteFileAtomic(Utf8ToUtf16(dir + "/" + name), Drawing()));
    const auto found = service.users().folderByName(user, folder);
    ASSERT_TRUE(found.has_value()) << folder;
    const CollectionReply reply = CollectBlockFile(u"token-" + Utf8ToUtf16(std::to_string(user)), Utf8ToUtf16(std::to_string(found->id)),
                                                   Utf8ToUtf16(dir + "/" + name), CollectForce::FromDisk);
    ASSERT_TRUE(reply.Is(u"1")) << name;
}

void PanelWorld::MakePanel(bool waitForStart, float rate) {
    WriteOptionString(u"Rate", QString::number(rate).toStdU16String());
    if (!FileExists(ShowListPath()))
        WriteFileAtomic(ShowListPath(), "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<root>\r</root>\r");
    // The panel takes the boutique galleries from the class table: list the
    // world's galleries there, and keep the service from replacing it.
    if (!FileExists(ClassTablePath())) {
        std::u16string table =
            u"<root><sort id=\"精品图库\" show=\"精品图库\"><kind>全部</kind></sort>"
            u"<sort id=\"通用图库\" show=\"通用图库\"><kind>全部</kind></sort><type>";
        for (const GalleryNode* gallery : root()->dirChildren)
            table += u"<item><name>" + gallery->name + u"</name><gv>" + (gallery->boutique ? u"1" : u"0") + u"</gv><ver>1</ver></item>";
        table += u"</type></root>";
        WriteFileAtomic(ClassTablePath(), "\xEF\xBB\xBF" + Utf16ToUtf8(table));
        WriteOptionInt(u"RequestNetwork", 0);
    }
    panel = std::make_unique<CBrindleDlg>();
    panel->Create(nullptr);
    panel->m_store = &store;  // before the first class list is built, 250 ms after start
    panel->show();
    if (waitForStart) {
        PumpUntil([&] { return panel->m_nav.classesReady; }, 3000);
        WaitForSwitch();
    }
}

TipWatcher::TipWatcher(bool accept) {
    connect(this, &QTimer::timeout, [this, accept] {
        auto* tip = qobject_cast<CPopTipDlg*>(QApplication::activeModalWidget());
        if (!tip || !tip->isVisible()) return;
        ++seen;
        okText = tip->OkButton() ? tip->OkButton()->text() : QString();
        cancelShown = tip->CancelButton() && tip->CancelButton()->isVisible();
        accept ? QTest::mouseClick(tip->OkButton(), Qt::LeftButton) : tip->reject();
    });
    start(20);
}

void ResetGalleryStore() {
    GalleryStore& store = GalleryStore::Instance();
    WaitForDownloadWorkers(std::chrono::seconds(30));
    FreeTree(store.root);
    store.staleClasses.clear();
    store.galleryVersions.clear();
    store.galleryFetchTicks.clear();
    store.syncBusy.store(0);
}

}  // namespace marrowfin::test
