// Random bytes through SetText, SetUtf8Text (against SetText of the decoded
// bytes), LoadBytes and LoadFile; the result is walked, read and edited, and
// the index is checked after every edit. For a text that parsed well, the
// edited text must parse back to the same index.

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <tuple>
#include <vector>

#include "markup/markup_document.h"
#include "markup/markup_tokenizer.h"
#include "platform/files.h"
#include "platform/text.h"
#include "support/markup_index.h"

using marrowfin::MarkupDocument;

namespace {

void Check(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "index check failed: %s\n", what);
        std::abort();
    }
}

void CheckIndex(const MarkupDocument& doc) { Check(marrowfin::test::CheckIndex(doc).empty(), "index invariants"); }

using marrowfin::test::ShapeOf;

// Walks two documents of the same text side by side and compares what each
// element reads, attributes in an order that switches names on every element.
void CompareWalks(MarkupDocument& x, MarkupDocument& y, const std::u16string& a, const std::u16string& b) {
    while (x.LeaveElement()) {}
    x.RewindMain();
    y.RewindMain();
    for (int steps = 0; steps < 4000; ++steps) {
        const bool found = x.FindElement();
        Check(found == y.FindElement(), "same elements");
        if (found) {
            Check(x.GetAttribute(a) == y.GetAttribute(a), "attribute a");
            Check(x.GetAttribute(b) == y.GetAttribute(b), "attribute b");
            Check(x.GetAttribute(a) == y.GetAttribute(a), "attribute a again");
            Check(x.GetElementText() == y.GetElementText(), "element text");
            x.EnterElement();
            y.EnterElement();
        } else {
            const bool left = x.LeaveElement();
            Check(left == y.LeaveElement(), "same depth");
            if (!left) break;
        }
    }
}

std::u16string Piece(const uint8_t*& p, const uint8_t* end, size_t maxLength) {
    std::u16string out;
    while (p < end && out.size() < maxLength) {
        const uint8_t b = *p++;
        if (b == 0xFF) break;
        out += b < 0x80 ? static_cast<char16_t>(b) : static_cast<char16_t>(0x4E00 + b);
    }
    return out;
}

// Every '<' of the text read by the tokeniser with each wide start-tag road
// this processor has and without any: the nodes must agree.
void CompareTagRoads(std::u16string_view text) {
    using marrowfin::WideTags;
    marrowfin::MarkupTokenizer plain(text.data(), text.size(), nullptr, WideTags::None);
    for (const WideTags level : {WideTags::Avx2, WideTags::Avx512}) {
        if (marrowfin::WideTagLevel() < level) continue;
        marrowfin::MarkupTokenizer wide(text.data(), text.size(), nullptr, level);
        for (size_t at = text.find(u'<'); at != std::u16string_view::npos; at = text.find(u'<', at + 1)) {
            marrowfin::MarkupNode x;
            marrowfin::MarkupNode y;
            plain.Read(at, x);
            wide.Read(at, y);
            Check(std::tie(x.kind, x.offset, x.length, x.nameOffset, x.nameEnd, x.empty) ==
                      std::tie(y.kind, y.offset, y.length, y.nameOffset, y.nameEnd, y.empty),
                  "wide and plain start tags");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const uint8_t mode = data[0];
    const std::string bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    MarkupDocument doc;
    bool ok;
    switch (mode % 4) {
        case 0: {
            std::u16string text(bytes.size() / 2, u'\0');
            for (size_t i = 0; i < text.size(); ++i)
                text[i] = static_cast<char16_t>(static_cast<uint8_t>(bytes[2 * i]) |
                                                (static_cast<uint8_t>(bytes[2 * i + 1]) << 8));
            ok = doc.SetText(text);
            break;
        }
        case 1: ok = doc.LoadBytes(bytes); break;
        case 3: {
            // A reply's bytes read straight into the document must give what
            // decoding them first and setting the text gives.
            ok = doc.SetUtf8Text(bytes);
            MarkupDocument wide;
            const bool wideOk = wide.SetText(marrowfin::Utf8ToUtf16(bytes.substr(0, bytes.find('\0'))));
            Check(ok == wideOk, "UTF-8 text parses as its decoded text");
            Check(doc.Text() == wide.Text(), "UTF-8 text decodes as the platform decodes it");
            Check(ShapeOf(doc) == ShapeOf(wide), "UTF-8 text indexes as its decoded text");
            break;
        }
        default: {
            static const std::u16string path =
                marrowfin::Utf8ToUtf16("/tmp/markup_fuzz_" + std::to_string(getpid()) + ".xml");
            marrowfin::WriteFileAtomic(path, bytes);
            ok = doc.LoadFile(path);
            break;
        }
    }
    CheckIndex(doc);
    CompareTagRoads(doc.Text());
    // Records stop once 1000 characters are reached; the last one may carry
    // a tag name from the text, escaped at most six units for one.
    Check(doc.GetResult().size() < 1000 + 200 + 6 * (size + doc.Text().size()), "result cap");

    // Walk every element, reading names, texts and attributes.
    const uint8_t* p = data + 1;
    const uint8_t* end = data + size;
    const std::u16string name = Piece(p, end, 8);
    int steps = 0;
    doc.RewindMain();
    while (steps++ < 2000) {
        if (doc.FindElement()) {
            (void)doc.GetElementText();
            (void)doc.GetAttribute(name);
            (void)doc.GetTagName();
            if (doc.FindChildElement()) {
                (void)doc.GetChildText();
                (void)doc.GetChildAttribute(name);
                doc.RewindMain();
                doc.FindElement();
            }
            doc.FindChildElement(name);
            if (!doc.EnterElement()) break;
            doc.RewindMain();
        } else if (!doc.LeaveElement()) {
            break;
        }
    }

    // Edits driven by the rest of the input.
    doc.RewindMain();
    for (int i = 0; i < 12 && p < end; ++i) {
        const uint8_t op = *p++;
        const std::u16string a = Piece(p, end, 6);
        const std::u16string b = Piece(p, end, 10);
        switch (op % 6) {
            case 0: doc.AddElement(a, b); break;
            case 1: doc.SetAttribute(a, b); break;
            case 2: doc.FindElement(op & 0x40 ? a : std::u16string()); break;
            case 3:
                doc.FindChildElement();
                doc.EnterElement();
                break;
            case 4: doc.LeaveElement(); break;
            case 5: doc.RewindMain(); break;
        }
        CheckIndex(doc);
        // Reads between edits, so that a later edit finds them remembered.
        (void)doc.GetAttribute(a);
        (void)doc.GetChildAttribute(b);
    }
    if (ok) {
        MarkupDocument again;
        again.SetText(doc.Text());
        Check(ShapeOf(again) == ShapeOf(doc), "edited text parses back to the same index");
        CompareWalks(doc, again, name, name.empty() ? std::u16string(u"id") : name.substr(0, name.size() / 2 + 1));
    }
    return 0;
}
