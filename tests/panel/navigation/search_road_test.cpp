// The search page against the stand-in service: rows listed, fetched while
// in view, used, failing; one request per text, the box's word; the service down.
#include "panel_world.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

struct SearchWorld : PanelWorld {
    RecordingHost host;
    SearchWorld() : PanelWorld(SampleLibrary()) {}

    CBrindleDlg& Open() {
        MakePanel();
        panel->hostWindow = HandleOf(&host);
        panel->showMode = u"YL";  // the panel stays up while it inserts
        panel->GoToPage(PageSearch);
        return *panel;
    }
    // Types `text` into the box and presses the search button `laterMs` after the last press.
    void Search(const QString& text, int laterMs = 500) {
        panel->m_searchEdit->clear();
        // Typed where the test keyboard has the keys.
        const bool ascii = std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80; });
        ascii ? QTest::keyClicks(panel->m_searchEdit, text) : panel->m_searchEdit->setText(text);
        ClickButton(ControlId::Search, laterMs);
    }
    bool WaitForRows(int ms = 5000) {
        return PumpUntil([&] { return panel->SearchEnded() && Shown(panel->m_searchList); }, ms);
    }
    long Served(const std::string& path) { return service.counters().get(path).count; }
    // A press on the row's "使用", and the click timer's wait.
    void Use(int row) {
        Click(panel->m_searchList, panel->m_searchList->RowRect(row).topLeft() + QPoint(ScaleUnits(670), ScaleUnits(29)));
        Pump(400);
    }
    int RowsInView() const {
        int n = 0;
        for (int i = 0; i < int(panel->m_search.rows.size()); ++i)
            n += panel->m_searchList->RowRect(i).intersects(panel->m_searchList->rect()) ? 1 : 0;
        return n;
    }
};

}  // namespace

TEST(LiveSearch, RowsInViewFetchQuietlyUseFetchesFirstAndFailuresShowOnTheRow) {
    SearchWorld w;
    CBrindleDlg& p = w.Open();
    w.service.counters().reset();
    w.Search(QStringLiteral("_00"));
    ASSERT_TRUE(w.WaitForRows());
    EXPECT_EQ(w.Served("/gallery/search_g"), 1);
    const int inView = w.RowsInView();
    ASSERT_GT(p.m_search.rows.size(), size_t(2 * inView)) << "more than two screens of rows";

    // Rows in view for 700 ms fetch their files, at most a screen at once; the others never.
    ASSERT_TRUE(PumpUntil([&] { return w.Served("/files/*") >= inView; }, 5000));
    ASSERT_TRUE(PumpUntil(
        [&] {
            return std::all_of(p.m_search.rows.begin(), p.m_search.rows.begin() + inView,
                               [](const BlockRow& r) { return r.state == RowFetched && !r.thumbnail.isNull(); });
        },
        5000));
    const service::PathCount files = w.service.counters().get("/files/*");
    EXPECT_TRUE(files.count == inView && files.peak <= 6) << files.count << " " << files.peak;

    // Without prefetch (nom=0: nothing fetched unasked, the search model's and the reply's tests) the rows stay remote.
    w.service.setSettings({.nom = "0"});
    w.Search(QStringLiteral("_01"));
    ASSERT_TRUE(w.WaitForRows());
    ASSERT_GE(p.m_search.rows.size(), 3u);

    // "使用" on a remote row fetches it, with its progress; a second "使用" inserts.
    w.Use(0);
    ASSERT_TRUE(PumpUntil([&] { return p.m_search.rows[0].state == RowFetched; }));
    EXPECT_TRUE(FileSize(p.m_search.rows[0].path.toStdU16String()) >= 1025 && w.host.Requests(2, 4).empty());
    w.Use(0);
    const auto inserts = w.host.Requests(MARROWFIN_REQUEST_INSERT_YL);
    ASSERT_EQ(inserts.size(), 1u);
    EXPECT_TRUE(QString::fromStdU16String(inserts[0].text) == p.m_search.rows[0].path && p.isVisible());  // YL: the panel stays

    // A refused download fails visibly, leaves no file, and the row comes back after three seconds.
    w.service.faults().set("/files/*", {.status = 500});
    w.Use(1);
    ASSERT_TRUE(PumpUntil([&] { return p.m_search.rows[1].state == RowFailed; }));
    EXPECT_FALSE(PathExists(p.m_search.rows[1].path.toStdU16String()));
    ASSERT_TRUE(PumpUntil([&] { return p.m_search.rows[1].state == RowRemote; }, 4500));
    w.service.faults().clearAll();
    const int row = 2;
    // An error page left on disk by an older program is deleted by "使用", not inserted.
    const std::u16string page = p.m_search.rows[row].path.toStdU16String();
    CreateDirectories(page.substr(0, page.rfind(u'/')));
    WriteFileAtomic(page, "<html>");
    p.m_search.rows[row].state = RowFetched;
    w.Use(row);
    EXPECT_TRUE(p.m_search.rows[row].state == RowRemote && !PathExists(p.m_search.rows[row].path.toStdU16String()));
    EXPECT_EQ(w.host.Requests(MARROWFIN_REQUEST_INSERT_YL).size(), 1u);
}

TEST(LiveSearch, TheSameTextAsksOnceTheBoxRemembersItAndTheStoreAnswersWhenTheServiceCannot) {
    SearchWorld w;
    GalleryNode* local = w.AddGallery({u"本地图库", 2, 3});
    GalleryNode* old = w.AddGallery({u"我的收藏", 1, 2});
    w.WriteBlockFiles(local, std::string(2048, 'x'));
    w.WriteBlockFiles(old, std::string(2048, 'x'));
    CBrindleDlg& p = w.Open();
    const auto names = [&] {
        QStringList all;
        for (const BlockRow& row : p.m_search.rows) all << row.name;
        return all;
    };

    // The same text again while its run is under way sends no second request; the box's
    // placeholder keeps the service's word when the options say so.
    g_defaultHotWord = QStringLiteral("门");
    WriteOptionInt(u"GalDefSearch", 1);
    w.service.faults().set("/gallery/search_g", {.latencyMs = 1500, .remaining = 1});
    w.Search(QStringLiteral("_003"));
    w.Search(QStringLiteral("_003"));
    ASSERT_TRUE(w.WaitForRows());
    EXPECT_EQ(std::make_pair(w.Served("/gallery/search_g"), g_defaultHotWord), std::make_pair(1L, QStringLiteral("门")));

    // Else it follows the last search. Blocks of the old local collection head the rows, even
    // when the service finds nothing.
    WriteOptionInt(u"GalDefSearch", 0);
    w.Search(QStringLiteral("类A_1"));
    ASSERT_TRUE(w.WaitForRows());
    EXPECT_EQ(std::make_pair(g_defaultHotWord, names()),
              std::make_pair(QStringLiteral("类A_1"), QStringList({QStringLiteral("类A_1.dwg")})));

    // The service down, slower than the quiet time: the store's own blocks answer.
    w.service.faults().set("/gallery/search_g", {.latencyMs = 600, .status = 500});
    w.Search(QStringLiteral("类B"));
    ASSERT_TRUE(PumpUntil([&] { return p.m_search.searchState == 0 && w.Shown(p.m_searchList); }, 5000));
    EXPECT_EQ(names(), QStringList({QStringLiteral("类B_0.dwg"), QStringLiteral("类B_1.dwg"), QStringLiteral("类B_2.dwg")}));
    EXPECT_EQ(p.m_search.rows[0].path, QString::fromStdU16String(local->dirChildren[1]->fileChildren[0]->Path()));
}

TEST(LiveSearch, AHotWordAddsItsClassAndOpensItWithoutSearching) {
    SearchWorld w;
    CBrindleDlg& p = w.Open();
    const QString word = QString::fromStdU16String(w.galleries[1]);
    p.m_hotWords = {QStringLiteral("门"), word};
    p.GoToPage(PageBrowse);
    p.GoToPage(PageSearch);
    ASSERT_TRUE(w.ButtonShown(4001) && p.Button(4001)->text() == word);
    w.service.counters().reset();
    w.ClickButton(4001);
    ASSERT_TRUE(PumpUntil([&] { return w.RowOf(w.galleries[1]) >= 0 && p.m_nav.classIndex == w.RowOf(w.galleries[1]); }, 5000));
    const std::vector<ShowItem> listed = ReadShowList(true);
    EXPECT_TRUE(std::any_of(listed.begin(), listed.end(), [&](const ShowItem& item) { return item.name == w.galleries[1]; }));
    EXPECT_TRUE(p.m_nav.page == PageBrowse && !w.Shown(p.m_searchList) && !w.ButtonShown(4001) && w.Served("/gallery/search_g") == 0);
}
