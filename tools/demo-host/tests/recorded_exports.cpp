#include "recorded_exports.h"

namespace marrowfin::demo::test {

namespace {

QString Text(const char16_t* text) { return text ? QString::fromUtf16(text) : QStringLiteral("<null>"); }

void Add(const QString& call) { Record().calls << call; }

}  // namespace

Recorded& Record() {
    static Recorded record;
    return record;
}

GalleryExports RecordedExports() {
    Record() = Recorded{};
    GalleryExports e;
    e.FirstSynchro = [] { Add(QStringLiteral("FirstSynchro")); };
    e.show = [] { Add(QStringLiteral("show")); };
    e.ShowGallery = [](const char16_t* l, const char16_t* m) { Add(QStringLiteral("ShowGallery(%1|%2)").arg(Text(l), Text(m))); };
    e.HideGallery = [] { Add(QStringLiteral("HideGallery")); };
    e.CloseGallery = [] { Add(QStringLiteral("CloseGallery")); };
    e.GetGallery = []() -> uint64_t { return Record().panel; };
    e.GaDllPretanslateMsg = [](MarrowfinMsg* m) {
        ++Record().preTranslateCalls;
        Record().lastMessage = *m;
        return Record().preTranslateAnswer;
    };
    e.IsDLLHwnd = [](uint64_t) { return 0; };
    e.SearchBrindleRes = [](const char16_t* t, const char16_t* m) { Add(QStringLiteral("Search(%1|%2)").arg(Text(t), Text(m))); };
    e.ResetClass = [](const char16_t* t) { Add(QStringLiteral("ResetClass(%1)").arg(Text(t))); };
    e.IsBlkBoutique = [](const char16_t* path) -> uint8_t {
        const QString& suffix = Record().boutiqueSuffix;
        return !suffix.isEmpty() && Text(path).endsWith(suffix) ? 1 : 0;
    };
    e.ShowBoutiqueGallery = [] { Add(QStringLiteral("ShowBoutiqueGallery")); };
    e.AddMoreGallery = [](const char16_t* n) { Add(QStringLiteral("AddMoreGallery(%1)").arg(Text(n))); };
    e.MarrowfinWindowOf = [](void*) -> uint64_t { return 99; };
    e.MarrowfinSetMainWindow = [](void*) { Add(QStringLiteral("SetMainWindow")); };
    e.MarrowfinSendPanelControl = [](uint64_t panel, uintptr_t code, intptr_t l) -> intptr_t {
        Add(QStringLiteral("control(%1,%2,%3)").arg(panel).arg(code).arg(l));
        return 0;
    };
    e.MarrowfinSendCopyData = [](uint64_t panel, uintptr_t code, const char16_t* t) -> intptr_t {
        Add(QStringLiteral("copy(%1,%2,%3)").arg(panel).arg(code).arg(Text(t)));
        return code == 411 || code == 412 ? 1 : 0;
    };
    return e;
}

}  // namespace marrowfin::demo::test
