#include "store/previous_generation.h"

#include "platform/files.h"
#include "platform/ini_file.h"
#include "store/store_paths.h"

namespace marrowfin {

void MoveFromPreviousGeneration() {
    if (FileExists(ShowListPath())) return;
    const std::u16string old = PreviousGenerationFolder();
    const std::u16string flagFile = old + u"/version.ini";
    if (IniGetString(flagFile, u"BrindleMoved", u"flag", u"0", 8) != u"0") return;
    if (FileExists(old + u"/Show.xml")) {
        (void)CreateDirectories(StoreRoot());
        // Never overwrites: at this point the target can only be missing.
        (void)CopyFileNoOverwrite(old + u"/Show.xml", ShowListPath());
    }
    (void)IniWriteString(flagFile, u"BrindleMoved", u"flag", u"1");
}

}  // namespace marrowfin
