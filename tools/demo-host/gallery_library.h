#pragma once
// libmarrowfin.so loaded at run time, as a CAD host loads its plug-ins: the
// library is opened with dlopen and every export is resolved with dlsym.
// The host never links it, so a missing export is a clear error at start,
// not a failure to run at all.

#include <QString>
#include <QStringList>

#include "marrowfin/marrowfin.h"

namespace marrowfin::demo {

// The exports, typed after the public header's declarations.
struct GalleryExports {
    decltype(&::FirstSynchro) FirstSynchro = nullptr;
    decltype(&::show) show = nullptr;
    decltype(&::ShowGallery) ShowGallery = nullptr;
    decltype(&::HideGallery) HideGallery = nullptr;
    decltype(&::CloseGallery) CloseGallery = nullptr;
    decltype(&::GetGallery) GetGallery = nullptr;
    decltype(&::GaDllPretanslateMsg) GaDllPretanslateMsg = nullptr;
    decltype(&::IsDLLHwnd) IsDLLHwnd = nullptr;
    decltype(&::SearchBrindleRes) SearchBrindleRes = nullptr;
    decltype(&::ResetClass) ResetClass = nullptr;
    decltype(&::IsBlkBoutique) IsBlkBoutique = nullptr;
    decltype(&::ShowBoutiqueGallery) ShowBoutiqueGallery = nullptr;
    decltype(&::AddMoreGallery) AddMoreGallery = nullptr;
    decltype(&::MarrowfinWindowOf) MarrowfinWindowOf = nullptr;
    decltype(&::MarrowfinSetMainWindow) MarrowfinSetMainWindow = nullptr;
    decltype(&::MarrowfinSendPanelControl) MarrowfinSendPanelControl = nullptr;
    decltype(&::MarrowfinSendCopyData) MarrowfinSendCopyData = nullptr;
};

class GalleryLibrary {
public:
    GalleryLibrary() = default;
    // The library stays loaded: its Qt objects and static destructors must
    // not outlive their code at exit.
    ~GalleryLibrary() = default;
    GalleryLibrary(const GalleryLibrary&) = delete;
    GalleryLibrary& operator=(const GalleryLibrary&) = delete;

    // Opens the library and resolves every export. False with error() set
    // when the file cannot be opened or any export is missing; then no
    // export is usable (all stay null).
    bool Load(const QString& path);

    const GalleryExports& exports() const { return m_exports; }
    const QString& error() const { return m_error; }
    // Names of the exports the last Load could not find.
    const QStringList& missing() const { return m_missing; }

private:
    GalleryExports m_exports;
    QString m_error;
    QStringList m_missing;
};

}  // namespace marrowfin::demo
