#pragma once
// The class manager's working copy of Show.xml: class names behind a
// three-digit number that only keeps the order. The newest choice is 001,
// so Show.xml, written in key order, lists the newest class first.

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "panel/classes/class_table.h"
#include "store/show_list.h"

namespace marrowfin {

// SelectionKey -> describe text.
using ClassSelection = std::map<std::u16string, std::u16string>;

// "%03d" and the name.
std::u16string SelectionKey(int number, std::u16string_view name);
// The name behind the number.
std::u16string SelectionName(std::u16string_view key);

// Show.xml as it stands, numbered from 001 in file order; none when missing.
ClassSelection ReadSelection();
// Whether some entry holds `name`.
bool IsSelected(const ClassSelection& selection, std::u16string_view name);
// The class goes first (001), every other entry moves one number on.
void SelectFirst(ClassSelection& selection, std::u16string_view name, std::u16string_view describe);
// Removes the entries of `name`; the others keep their numbers.
void Deselect(ClassSelection& selection, std::u16string_view name);
// Drops the names that no kind of the table knows any more.
void PruneSelection(ClassSelection& selection, const ClassTable& table);
// The entries as Show.xml items, in key order.
std::vector<ShowItem> SelectionItems(const ClassSelection& selection);

// Both kind tables have entries: the pickers have something to show.
bool HasClassTable(const ClassTable& table);

}  // namespace marrowfin
