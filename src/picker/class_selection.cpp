#include "picker/class_selection.h"

#include <cstdio>

namespace marrowfin {

std::u16string SelectionKey(int number, std::u16string_view name) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%03d", number);
    std::u16string key;
    for (const char* c = digits; *c; ++c) key.push_back(static_cast<char16_t>(*c));
    key += name;
    return key;
}

std::u16string SelectionName(std::u16string_view key) {
    return key.size() > 3 ? std::u16string(key.substr(3)) : std::u16string();
}

ClassSelection ReadSelection() {
    ClassSelection selection;
    int number = 0;
    for (const ShowItem& item : ReadAllShowItems()) selection[SelectionKey(++number, item.name)] = item.describe;
    return selection;
}

bool IsSelected(const ClassSelection& selection, std::u16string_view name) {
    for (const auto& [key, describe] : selection)
        if (SelectionName(key) == name) return true;
    return false;
}

void SelectFirst(ClassSelection& selection, std::u16string_view name, std::u16string_view describe) {
    // Numbered anew from the old numbers, so an unchecked class leaves a gap
    // that stays; only the order matters.
    ClassSelection renumbered;
    renumbered[SelectionKey(1, name)] = std::u16string(describe);
    for (auto& [key, value] : selection) {
        const int number = std::stoi(std::string(key.begin(), key.begin() + 3));
        renumbered[SelectionKey(number + 1, SelectionName(key))] = std::move(value);
    }
    selection = std::move(renumbered);
}

void Deselect(ClassSelection& selection, std::u16string_view name) {
    for (auto it = selection.begin(); it != selection.end();)
        it = SelectionName(it->first) == name ? selection.erase(it) : std::next(it);
}

namespace {
bool TableKnows(const KindMap& kinds, std::u16string_view name) {
    for (const auto& [key, items] : kinds)
        for (const ClassItem& item : items)
            if (item.name == name) return true;
    return false;
}
}  // namespace

void PruneSelection(ClassSelection& selection, const ClassTable& table) {
    for (auto it = selection.begin(); it != selection.end();) {
        const std::u16string name = SelectionName(it->first);
        const bool known = TableKnows(table.generalKinds, name) || TableKnows(table.boutiqueKinds, name);
        it = known ? std::next(it) : selection.erase(it);
    }
}

std::vector<ShowItem> SelectionItems(const ClassSelection& selection) {
    std::vector<ShowItem> items;
    items.reserve(selection.size());
    for (const auto& [key, describe] : selection) items.push_back({SelectionName(key), describe});
    return items;
}

bool HasClassTable(const ClassTable& table) { return !table.generalKinds.empty() && !table.boutiqueKinds.empty(); }

}  // namespace marrowfin
