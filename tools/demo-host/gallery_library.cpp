#include "gallery_library.h"

#include <dlfcn.h>

namespace marrowfin::demo {

namespace {

template <typename Fn>
void Resolve(void* handle, const char* name, Fn& slot, QStringList& missing) {
    void* symbol = dlsym(handle, name);
    if (!symbol) {
        missing << QString::fromLatin1(name);
        return;
    }
    slot = reinterpret_cast<Fn>(symbol);
}

}  // namespace

bool GalleryLibrary::Load(const QString& path) {
    m_exports = GalleryExports{};
    m_missing.clear();
    m_error.clear();
    if (path.isEmpty()) {
        m_error = QStringLiteral("no library path given");
        return false;
    }
    // RTLD_LOCAL: the library's own copies of our shared code must not bind
    // to the host's, nor the other way round.
    void* handle = dlopen(path.toLocal8Bit().constData(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        const char* why = dlerror();
        m_error = QStringLiteral("cannot load %1: %2").arg(path, QString::fromLocal8Bit(why ? why : "unknown error"));
        return false;
    }
    GalleryExports e;
    Resolve(handle, "FirstSynchro", e.FirstSynchro, m_missing);
    Resolve(handle, "show", e.show, m_missing);
    Resolve(handle, "ShowGallery", e.ShowGallery, m_missing);
    Resolve(handle, "HideGallery", e.HideGallery, m_missing);
    Resolve(handle, "CloseGallery", e.CloseGallery, m_missing);
    Resolve(handle, "GetGallery", e.GetGallery, m_missing);
    Resolve(handle, "GaDllPretanslateMsg", e.GaDllPretanslateMsg, m_missing);
    Resolve(handle, "IsDLLHwnd", e.IsDLLHwnd, m_missing);
    Resolve(handle, "SearchBrindleRes", e.SearchBrindleRes, m_missing);
    Resolve(handle, "ResetClass", e.ResetClass, m_missing);
    Resolve(handle, "IsBlkBoutique", e.IsBlkBoutique, m_missing);
    Resolve(handle, "ShowBoutiqueGallery", e.ShowBoutiqueGallery, m_missing);
    Resolve(handle, "AddMoreGallery", e.AddMoreGallery, m_missing);
    Resolve(handle, "MarrowfinWindowOf", e.MarrowfinWindowOf, m_missing);
    Resolve(handle, "MarrowfinSetMainWindow", e.MarrowfinSetMainWindow, m_missing);
    Resolve(handle, "MarrowfinSendPanelControl", e.MarrowfinSendPanelControl, m_missing);
    Resolve(handle, "MarrowfinSendCopyData", e.MarrowfinSendCopyData, m_missing);
    if (!m_missing.isEmpty()) {
        m_error = QStringLiteral("%1 lacks %2 of the exports a host needs: %3")
                      .arg(path)
                      .arg(m_missing.size())
                      .arg(m_missing.join(QStringLiteral(", ")));
        // Nothing is half usable; the library stays mapped (unloading a Qt
        // library that may have registered types is not safe).
        return false;
    }
    m_exports = e;
    return true;
}

}  // namespace marrowfin::demo
