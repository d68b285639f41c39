#pragma once
// Reading a class-table document into the kind tables: shared by both readers.

#include "markup/markup_document.h"
#include "panel/classes/class_table.h"

namespace marrowfin {

// Walks every `root` of the document (each restarts the kind tables and the
// kind numbers) and answers each class's version by name.
ClassTableVersions ReadClassDocument(MarkupDocument& doc, ClassTable& table);

// Writes the document as the cached file, UTF-8 with a byte order mark,
// replacing the old one in one step.
bool SaveClassTable(const MarkupDocument& doc);

// The highest `ver` among the items (plain string order); empty for none.
std::u16string HighestVersion(const std::vector<ClassItem>& items);

}  // namespace marrowfin
