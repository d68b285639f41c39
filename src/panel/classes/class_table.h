#pragma once
// The server's list of gallery classes: which classes exist, under which
// kinds of the boutique and general sorts the pickers show them, which are
// boutique classes, and at which version each stands. Cached in the store as
// NewAllGalleryType1.xml; NewAddGalleryType.xml remembers what the user saw.

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/product_texts.h"

namespace marrowfin {

// One class of the table.
struct ClassItem {
    std::u16string name;
    std::u16string ver;
    std::u16string describe;
    std::u16string gv;  // "1" for a boutique class
};

// What is known of a class or a kind: the newest version and the one the user has seen.
struct ClassExtra {
    std::u16string name;
    std::u16string newest;
    std::u16string seen;
};

// "%03d_" with the running number of the kind, then the kind's text: the
// sorted map keeps the kinds in file order.
std::u16string KindKey(int number, std::u16string_view kind);
// The kind's text behind its number.
std::u16string KindName(std::u16string_view key);

using KindMap = std::map<std::u16string, std::vector<ClassItem>>;
// A class name to its version text in the class table; the tree's class
// versions (numbers, per gallery) are another thing.
using ClassTableVersions = std::map<std::u16string, std::u16string>;

struct ClassTable {
    KindMap generalKinds;
    KindMap boutiqueKinds;
    std::u16string boutiqueTitle{kBoutiqueTitle};
    std::u16string generalTitle{kGeneralTitle};
    std::u16string typeWord = u"选择图库";
    bool showDesc = false;
};

// Process-wide, read and written on the panel's thread only.
extern std::map<std::u16string, ClassExtra> g_seenClasses;
extern std::map<std::u16string, ClassExtra> g_seenKinds;
extern std::u16string g_typeWord;
extern std::u16string g_boutiqueTitle;
extern std::u16string g_generalTitle;

// The `item` entries of NewAddGalleryType.xml into g_seenClasses (text as name, `ver` as seen).
void ReadSeenClasses();
// NewAddGalleryType.xml anew: every g_seenClasses entry as `item`, then every
// g_seenKinds entry as `class`, each with its seen version as `ver`.
bool WriteSeenVersions();

// First reader, once at start-up: fills `table` from the cached file and
// answers each class's version; also reads the seen kinds and, on a first
// run, takes the current kind versions as seen.
ClassTableVersions ReadClassVersions(ClassTable& table);

// Second reader. Empty text: the cached file. Otherwise the service's answer,
// saved as the cached file when it parses; a bad answer falls back to the
// cached file. New and risen versions against `startVersions` (the table of
// the start of the run) are noted in g_seenClasses. False when no document
// could be read at all.
bool ApplyClassTable(std::u16string_view text, ClassTable& table, const ClassTableVersions& startVersions);

// The sort word of GalDefSort: 0 "def", 1 "hot", 2 "new", anything else empty.
std::u16string SortWord(int32_t galDefSort);
// The service's answers; empty when the request failed.
std::u16string FetchClassTable();
std::u16string FetchHotWords();
// `default` children of each root, then the `item`s of its `hot_words`, in order.
std::vector<std::u16string> ParseHotWords(std::u16string_view reply);

// The first item of that name, general kinds first; an empty item when none.
ClassItem FindClassItem(const ClassTable& table, std::u16string_view name);
// Whether the top class of a store path (the component behind the store's
// folder) is a boutique class of the table.
bool IsBoutiqueClass(const ClassTable& table, std::u16string_view path);

}  // namespace marrowfin
