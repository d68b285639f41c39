#include "platform/ini_file.h"

#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/files.h"
#include "platform/text.h"

namespace marrowfin {

namespace {

constexpr std::string_view kUtf8Bom = "\xEF\xBB\xBF";

std::string_view Trim(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r')) s.remove_suffix(1);
    return s;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    // Fold through UTF-16 so that non-ASCII names compare without case too.
    return ToLowerFold(Utf8ToUtf16(a)) == ToLowerFold(Utf8ToUtf16(b));
}

std::vector<std::string> SplitLines(std::string_view bytes) {
    if (bytes.substr(0, kUtf8Bom.size()) == kUtf8Bom) bytes.remove_prefix(kUtf8Bom.size());
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < bytes.size()) {
        size_t end = bytes.find('\n', start);
        if (end == std::string_view::npos) end = bytes.size();
        std::string_view line = bytes.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        lines.emplace_back(line);
        start = end + 1;
    }
    return lines;
}

// "[name]" gives name; anything else is not a section header.
bool SectionName(std::string_view line, std::string_view& name) {
    line = Trim(line);
    if (line.size() < 2 || line.front() != '[') return false;
    const size_t close = line.find(']');
    if (close == std::string_view::npos) return false;
    name = Trim(line.substr(1, close - 1));
    return true;
}

bool KeyValue(std::string_view line, std::string_view& key, std::string_view& value) {
    const size_t eq = line.find('=');
    if (eq == std::string_view::npos) return false;
    key = Trim(line.substr(0, eq));
    value = Trim(line.substr(eq + 1));
    // A value written in quotes is read without them.
    if (value.size() >= 2 &&
        ((value.front() == '"' && value.back() == '"') || (value.front() == '\'' && value.back() == '\''))) {
        value = value.substr(1, value.size() - 2);
    }
    return true;
}

// Calls `visit(key, value)` for each key of every section named `section`
// (sections of one name continue each other), until it answers false.
template <class Visit>
void ForEachKeyOf(const std::string& bytes, std::string_view section, Visit visit) {
    bool inSection = false;
    for (const std::string& line : SplitLines(bytes)) {
        std::string_view name, k, v;
        if (SectionName(line, name)) {
            inSection = EqualsNoCase(name, section);
            continue;
        }
        if (inSection && KeyValue(line, k, v) && !visit(k, v)) return;
    }
}

// One lock per file: a write reads, changes and renames the whole file, so
// two writers of one file in this process would lose each other's keys. The
// locks live for the process; there are a handful of INI files.
std::mutex& WriteLockOf(std::u16string_view file) {
    static std::mutex registryLock;
    static std::map<std::u16string, std::unique_ptr<std::mutex>, std::less<>> locks;
    std::lock_guard<std::mutex> guard(registryLock);
    auto it = locks.find(file);
    if (it == locks.end()) it = locks.emplace(std::u16string(file), std::make_unique<std::mutex>()).first;
    return *it->second;
}

}  // namespace

std::u16string IniGetString(std::u16string_view file, std::u16string_view section, std::u16string_view key,
                            std::u16string_view defaultValue, size_t bufferLength) {
    std::u16string result(defaultValue);
    std::string bytes;
    if (ReadWholeFile(file, bytes)) {
        const std::string wantKey = Utf16ToUtf8(key);
        ForEachKeyOf(bytes, Utf16ToUtf8(section), [&](std::string_view k, std::string_view v) {
            if (!EqualsNoCase(k, wantKey)) return true;
            result = Utf8ToUtf16(v);
            return false;
        });
    }
    if (bufferLength > 0 && result.size() > bufferLength - 1) result.resize(bufferLength - 1);
    return result;
}

IniSection::IniSection(std::u16string_view file, std::u16string_view section) {
    std::string bytes;
    if (!ReadWholeFile(file, bytes)) return;
    ForEachKeyOf(bytes, Utf16ToUtf8(section), [&](std::string_view k, std::string_view v) {
        m_entries.push_back({k.size(), ToLowerFold(Utf8ToUtf16(k)), Utf8ToUtf16(v)});
        return true;
    });
}

std::u16string IniSection::Get(std::u16string_view key, std::u16string_view defaultValue, size_t bufferLength) const {
    std::u16string result(defaultValue);
    // Through UTF-8 and back, as IniGetString compares.
    const std::string keyBytes = Utf16ToUtf8(key);
    const std::u16string folded = ToLowerFold(Utf8ToUtf16(keyBytes));
    for (const Entry& e : m_entries) {
        if (e.keyBytes == keyBytes.size() && e.foldedKey == folded) {
            result = e.value;
            break;
        }
    }
    if (bufferLength > 0 && result.size() > bufferLength - 1) result.resize(bufferLength - 1);
    return result;
}

int32_t ParseProfileInt(std::u16string_view text) {
    // Wraps like the 32-bit original.
    const LeadingInteger n = ScanLeadingInteger(text, 0xFFFFFFFFll);
    return static_cast<int32_t>(static_cast<uint32_t>(n.negative ? -n.magnitude : n.magnitude));
}

int32_t IniGetInt(std::u16string_view file, std::u16string_view section, std::u16string_view key,
                  int32_t defaultValue) {
    static constexpr char16_t kAbsent[] = u"\x1F<absent>";
    const std::u16string text = IniGetString(file, section, key, kAbsent);
    if (text == kAbsent) return defaultValue;
    return ParseProfileInt(text);
}

bool IniWriteString(std::u16string_view file, std::u16string_view section, std::u16string_view key,
                    std::u16string_view value) {
    if (file.empty() || section.empty() || key.empty()) return false;
    std::lock_guard<std::mutex> lock(WriteLockOf(file));
    std::string bytes;
    // A missing file is created; one that is there but unreadable is left
    // alone rather than replaced by this one key.
    if (ReadFileIfPresent(file, bytes) == FileRead::Failed) return false;
    std::vector<std::string> lines = SplitLines(bytes);
    const std::string wantSection = Utf16ToUtf8(section);
    const std::string wantKey = Utf16ToUtf8(key);
    const std::string newLine = wantKey + "=" + Utf16ToUtf8(value);

    bool inSection = false, done = false;
    size_t sectionEnd = std::string::npos;  // index after the last line of our section
    for (size_t i = 0; i < lines.size() && !done; ++i) {
        std::string_view name, k, v;
        if (SectionName(lines[i], name)) {
            if (inSection) break;
            inSection = EqualsNoCase(name, wantSection);
            if (inSection) sectionEnd = i + 1;
            continue;
        }
        if (!inSection) continue;
        if (KeyValue(lines[i], k, v) && EqualsNoCase(k, wantKey)) {
            lines[i] = newLine;
            done = true;
        } else if (!Trim(lines[i]).empty()) {
            sectionEnd = i + 1;
        }
    }
    if (!done) {
        if (sectionEnd == std::string::npos) {
            lines.push_back("[" + wantSection + "]");
            lines.push_back(newLine);
        } else {
            lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(sectionEnd), newLine);
        }
    }
    std::string out;
    for (const std::string& line : lines) {
        out += line;
        out += "\n";
    }
    const std::u16string fileText(file);
    const size_t slash = fileText.find_last_of(u'/');
    if (slash != std::u16string::npos && slash > 0) (void)CreateDirectories(fileText.substr(0, slash));
    return WriteFileAtomic(file, out);
}

}  // namespace marrowfin
