// From bytes in memory to a walkable document, then a walk that finds every
// item and reads three attributes: MarkupDocument beside pugixml, tinyxml2
// and libxml2, on three generated documents. Throughput is bytes of input per
// second; peak heap per input byte is measured once per library and document
// by counting every allocation of the run.

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <malloc.h>
#include <tinyxml2.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "markup/markup_document.h"
#include "markup/markup_tokenizer.h"
#include "markup/utf8_decoder.h"
#include "platform/text.h"

namespace {

// ---- Allocation counting: operator new, libxml2's and pugixml's hooks. ----
// Counting is on only for the one measured run, so that its own cost stays
// out of the timings.
std::atomic<bool> g_counting{false};
std::atomic<int64_t> g_current{0};
std::atomic<int64_t> g_peak{0};

void Count(void* p) {
    if (!p || !g_counting.load(std::memory_order_relaxed)) return;
    const int64_t now = g_current += static_cast<int64_t>(malloc_usable_size(p));
    int64_t peak = g_peak.load();
    while (now > peak && !g_peak.compare_exchange_weak(peak, now)) {}
}
void Uncount(void* p) {
    if (p && g_counting.load(std::memory_order_relaxed)) g_current -= static_cast<int64_t>(malloc_usable_size(p));
}
void* CountedMalloc(size_t n) {
    void* p = std::malloc(n);
    Count(p);
    return p;
}
void CountedFree(void* p) {
    Uncount(p);
    std::free(p);
}
void* CountedRealloc(void* p, size_t n) {
    Uncount(p);
    void* q = std::realloc(p, n);
    Count(q ? q : p);
    return q;
}
char* CountedStrdup(const char* s) {
    const size_t n = std::strlen(s) + 1;
    char* p = static_cast<char*>(CountedMalloc(n));
    if (p) std::memcpy(p, s, n);
    return p;
}

}  // namespace

void* operator new(size_t n) {
    void* p = CountedMalloc(n ? n : 1);
    if (!p) throw std::bad_alloc();
    return p;
}
void* operator new[](size_t n) { return operator new(n); }
void operator delete(void* p) noexcept { CountedFree(p); }
void operator delete[](void* p) noexcept { CountedFree(p); }
void operator delete(void* p, size_t) noexcept { CountedFree(p); }
void operator delete[](void* p, size_t) noexcept { CountedFree(p); }
// Big document texts are allocated aligned; they count like the rest.
void* operator new(size_t n, std::align_val_t a) {
    void* p =
        std::aligned_alloc(static_cast<size_t>(a), (n + static_cast<size_t>(a) - 1) & ~(static_cast<size_t>(a) - 1));
    if (!p) throw std::bad_alloc();
    Count(p);
    return p;
}
void operator delete(void* p, std::align_val_t) noexcept { CountedFree(p); }
void operator delete(void* p, size_t, std::align_val_t) noexcept { CountedFree(p); }

namespace {

using marrowfin::MarkupDocument;

// ---- The three documents. ----
struct Input {
    std::string bytes;
    std::vector<const char*> path;  // element names down to the items
    const char* attributes[3];
};

std::string Num(uint64_t n) { return std::to_string(n); }

// The all-galleries reply: galleries, classes, blocks with attributes (~20 MB).
Input AllGalleries() {
    Input in;
    in.path = {"root", "gallery", "class", "item"};
    in.attributes[0] = "id";
    in.attributes[1] = "name";
    in.attributes[2] = "path";
    std::string& s = in.bytes;
    s.reserve(21 << 20);
    s += "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<root status=\"success\">\r\n";
    uint64_t id = 100000;
    for (int g = 0; g < 40; ++g) {
        s += " <gallery id=\"" + Num(g) + "\" name=\"图库 " + Num(g) + "\" version=\"" + Num(g * 7 + 3) +
             "\" kind=\"2\">\r\n";
        for (int c = 0; c < 25; ++c) {
            s += "  <class id=\"" + Num(g * 100 + c) + "\" name=\"Class " + Num(c) + " 分类\" version=\"" + Num(c + 1) +
                 "\">\r\n";
            for (int i = 0; i < 150; ++i, ++id) {
                s += "   <item id=\"" + Num(id) + "\" name=\"Block " + Num(id) + " door-frame\" path=\"g" + Num(g) +
                     "/c" + Num(c) + "/" + Num(id) + ".dwg\" size=\"" + Num(id * 37 % 90000 + 1100) +
                     "\" ver=\"3\" thumb=\"t/" + Num(id) + ".png\" time=\"2024-05-" + Num(i % 28 + 1) + "\"/>\r\n";
            }
            s += "  </class>\r\n";
        }
        s += " </gallery>\r\n";
    }
    s += "</root>\r\n";
    return in;
}

// A class table of about 1 MB with Chinese text.
Input ClassTable() {
    Input in;
    in.path = {"root", "item"};
    in.attributes[0] = "id";
    in.attributes[1] = "name";
    in.attributes[2] = "parent";
    std::string& s = in.bytes;
    s += "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<root>\r\n";
    for (int i = 0; s.size() < (1 << 20); ++i) {
        s += "<item id=\"" + Num(i) + "\" name=\"建筑图块分类" + Num(i) + "号\" parent=\"" + Num(i / 10) +
             "\" type=\"门窗\"><title>标准门窗及立面图块</title><desc>这是第" + Num(i) +
             "个分类的说明文字，包含常用的中文字符与数字。</desc></item>\r\n";
    }
    s += "</root>\r\n";
    return in;
}

// Markup-dense: references in attributes and text, mixed content, comments, CDATA.
Input DenseMarkup() {
    Input in;
    in.path = {"root", "item"};
    in.attributes[0] = "a";
    in.attributes[1] = "b";
    in.attributes[2] = "c";
    std::string& s = in.bytes;
    s += "<?xml version=\"1.0\"?>\r\n<root>";
    for (int i = 0; s.size() < (2 << 20); ++i) {
        s += "<item a=\"x &amp; y " + Num(i) +
             "\" b='&lt;z&gt; &quot;q&quot;' c=\"&#x4E2D;&#25991;&#65;\">t &amp; <b>bold " + Num(i) +
             "</b> more &lt;text&gt;<!-- note --><i>it</i><![CDATA[<raw>&]]>&#169; end</item>";
    }
    s += "</root>";
    return in;
}

const Input& Document(int which) {
    static const Input docs[3] = {AllGalleries(), ClassTable(), DenseMarkup()};
    return docs[which];
}

// ---- One parse and walk per library; each returns a checksum of the values. ----

// Names in the caller's form, made once as a caller's constants would be.
struct WideNames {
    std::vector<std::u16string> path;
    std::u16string attributes[3];
};
const WideNames& WideNamesOf(const Input& in) {
    static std::vector<std::pair<const Input*, WideNames>> cache;
    for (auto& c : cache)
        if (c.first == &in) return c.second;
    WideNames w;
    for (const char* p : in.path) w.path.push_back(marrowfin::Utf8ToUtf16(p));
    for (int i = 0; i < 3; ++i) w.attributes[i] = marrowfin::Utf8ToUtf16(in.attributes[i]);
    cache.emplace_back(&in, std::move(w));
    return cache.back().second;
}

// The three attributes of an item in one pass (AttributeViews), as the
// product's walks read them, or one call per attribute (AttributeView).
template <bool OnePass>
size_t WalkMarkup(MarkupDocument& doc, const Input& in, size_t depth) {
    size_t sum = 0;
    const WideNames& names = WideNamesOf(in);
    const std::u16string_view wanted[3] = {names.attributes[0], names.attributes[1], names.attributes[2]};
    std::u16string_view values[3];
    std::u16string scratch[3];
    while (doc.FindElement(names.path[depth])) {
        if (depth + 1 == in.path.size()) {
            if constexpr (OnePass) {
                doc.AttributeViews(wanted, values, scratch);
                for (const std::u16string_view v : values) sum += v.size();
            } else {
                for (int i = 0; i < 3; ++i) sum += doc.AttributeView(wanted[i], scratch[i]).size();
            }
            sum += 1;
        } else {
            doc.EnterElement();
            sum += WalkMarkup<OnePass>(doc, in, depth + 1);
            doc.LeaveElement();
        }
    }
    return sum;
}
size_t RunMarkup(const Input& in, bool walk) {
    MarkupDocument doc;
    doc.LoadBytes(in.bytes);
    return walk ? WalkMarkup<true>(doc, in, 0) : doc.RecordCount();
}
size_t RunMarkupOneByOne(const Input& in, bool walk) {
    MarkupDocument doc;
    doc.LoadBytes(in.bytes);
    return walk ? WalkMarkup<false>(doc, in, 0) : doc.RecordCount();
}

size_t WalkPugi(pugi::xml_node node, const Input& in, size_t depth) {
    size_t sum = 0;
    for (pugi::xml_node e = node.child(in.path[depth]); e; e = e.next_sibling(in.path[depth])) {
        if (depth + 1 == in.path.size()) {
            for (const char* a : in.attributes) sum += std::strlen(e.attribute(a).value());
            sum += 1;
        } else {
            sum += WalkPugi(e, in, depth + 1);
        }
    }
    return sum;
}
size_t RunPugi(const Input& in, bool walk) {
    pugi::xml_document doc;
    doc.load_buffer(in.bytes.data(), in.bytes.size());
    return walk ? WalkPugi(doc, in, 0) : static_cast<size_t>(doc.first_child().type());
}

size_t WalkTiny(const tinyxml2::XMLNode* node, const Input& in, size_t depth) {
    size_t sum = 0;
    for (auto* e = node->FirstChildElement(in.path[depth]); e; e = e->NextSiblingElement(in.path[depth])) {
        if (depth + 1 == in.path.size()) {
            for (const char* a : in.attributes) {
                const char* v = e->Attribute(a);
                sum += v ? std::strlen(v) : 0;
            }
            sum += 1;
        } else {
            sum += WalkTiny(e, in, depth + 1);
        }
    }
    return sum;
}
size_t RunTiny(const Input& in, bool walk) {
    tinyxml2::XMLDocument doc;
    doc.Parse(in.bytes.data(), in.bytes.size());
    return walk ? WalkTiny(&doc, in, 0) : static_cast<size_t>(doc.ErrorID());
}

size_t WalkXml(xmlNodePtr first, const Input& in, size_t depth) {
    size_t sum = 0;
    const auto* name = reinterpret_cast<const xmlChar*>(in.path[depth]);
    for (xmlNodePtr e = first; e; e = e->next) {
        if (e->type != XML_ELEMENT_NODE || xmlStrcmp(e->name, name) != 0) continue;
        if (depth + 1 == in.path.size()) {
            for (const char* a : in.attributes) {
                xmlChar* v = xmlGetProp(e, reinterpret_cast<const xmlChar*>(a));
                if (v) {
                    sum += static_cast<size_t>(xmlStrlen(v));
                    xmlFree(v);
                }
            }
            sum += 1;
        } else {
            sum += WalkXml(e->children, in, depth + 1);
        }
    }
    return sum;
}
size_t RunXml(const Input& in, bool walk) {
    xmlDocPtr doc =
        xmlReadMemory(in.bytes.data(), static_cast<int>(in.bytes.size()), nullptr, nullptr, XML_PARSE_NONET);
    size_t sum = 0;
    if (doc) {
        sum = walk ? WalkXml(doc->children, in, 0) : 1;
        xmlFreeDoc(doc);
    }
    return sum;
}

using Runner = size_t (*)(const Input&, bool);

void Measure(benchmark::State& state, Runner run, bool walk) {
    const Input& in = Document(static_cast<int>(state.range(0)));
    // Peak heap of one run above what was live before it.
    // Only blocks allocated and freed within the run are counted: the
    // counters start from zero and a run frees all it allocates.
    g_current = 0;
    g_peak = 0;
    g_counting = true;
    const size_t expected = run(in, walk);
    g_counting = false;
    const double peak = static_cast<double>(g_peak.load());
    for (auto _ : state) benchmark::DoNotOptimize(run(in, walk));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(in.bytes.size()));
    state.counters["peak_per_byte"] = peak / static_cast<double>(in.bytes.size());
    state.counters["MB"] = static_cast<double>(in.bytes.size()) / 1e6;
    if (walk) state.counters["items+chars"] = static_cast<double>(expected);
}

// The machine is shared: the fastest of several repetitions is the figure
// least disturbed by others, so it is reported beside the median.
void Repeated(benchmark::internal::Benchmark* b) {
    b->Unit(benchmark::kMillisecond)->MinTime(0.3)->Repetitions(5);
    b->ComputeStatistics("min", [](const std::vector<double>& v) { return *std::min_element(v.begin(), v.end()); });
    b->ReportAggregatesOnly(true);
}
void Args(benchmark::internal::Benchmark* b) {
    b->ArgName("doc")->Arg(0)->Arg(1)->Arg(2);
    Repeated(b);
}

void BM_Markup_Parse(benchmark::State& s) { Measure(s, RunMarkup, false); }
void BM_Pugixml_Parse(benchmark::State& s) { Measure(s, RunPugi, false); }
void BM_Tinyxml2_Parse(benchmark::State& s) { Measure(s, RunTiny, false); }
void BM_Libxml2_Parse(benchmark::State& s) { Measure(s, RunXml, false); }
void BM_Markup_ParseWalk(benchmark::State& s) { Measure(s, RunMarkup, true); }
void BM_MarkupOneByOne_ParseWalk(benchmark::State& s) { Measure(s, RunMarkupOneByOne, true); }
void BM_Pugixml_ParseWalk(benchmark::State& s) { Measure(s, RunPugi, true); }
void BM_Tinyxml2_ParseWalk(benchmark::State& s) { Measure(s, RunTiny, true); }
void BM_Libxml2_ParseWalk(benchmark::State& s) { Measure(s, RunXml, true); }
BENCHMARK(BM_Markup_Parse)->Apply(Args);
BENCHMARK(BM_Pugixml_Parse)->Apply(Args);
BENCHMARK(BM_Tinyxml2_Parse)->Apply(Args);
BENCHMARK(BM_Libxml2_Parse)->Apply(Args);
BENCHMARK(BM_Markup_ParseWalk)->Apply(Args);
BENCHMARK(BM_MarkupOneByOne_ParseWalk)->Apply(Args);
BENCHMARK(BM_Pugixml_ParseWalk)->Apply(Args);
BENCHMARK(BM_Tinyxml2_ParseWalk)->Apply(Args);
BENCHMARK(BM_Libxml2_ParseWalk)->Apply(Args);

// The stages of MarkupDocument: decoding alone, tokenising alone, and parsing
// an already decoded text (tokenising and indexing). Walking is ParseWalk less
// Parse.
void BM_MarkupStage_Decode(benchmark::State& state) {
    const Input& in = Document(static_cast<int>(state.range(0)));
    std::vector<char16_t> out(in.bytes.size() + 1);
    size_t nulls = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(marrowfin::DecodeUtf8Into(reinterpret_cast<const unsigned char*>(in.bytes.data()),
                                                           in.bytes.size(), out.data(), nulls));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(in.bytes.size()));
}
void BM_MarkupStage_SetText(benchmark::State& state) {
    const Input& in = Document(static_cast<int>(state.range(0)));
    const std::u16string text = marrowfin::Utf8ToUtf16(in.bytes);
    for (auto _ : state) {
        MarkupDocument doc;
        benchmark::DoNotOptimize(doc.SetText(text));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(in.bytes.size()));
}
// Tokenising alone: every node read from the decoded text, text runs skipped
// to the next '<' as the parse does, nothing indexed. SetText less this is
// the indexing (and the copy of the text into the document). Start tags are
// read at each level of the processor (plain, AVX2, AVX-512), so that the
// roads of machines without AVX-512 are measured here too.
void BM_MarkupStage_Tokenise(benchmark::State& state) {
    const Input& in = Document(static_cast<int>(state.range(0)));
    const auto level = static_cast<marrowfin::WideTags>(state.range(1));
    if (level > marrowfin::WideTagLevel()) {
        state.SkipWithError("this processor has not got this level");
        return;
    }
    const std::u16string text = marrowfin::Utf8ToUtf16(in.bytes);
    for (auto _ : state) {
        marrowfin::MarkupTokenizer tokenizer(text.c_str(), text.size(), nullptr, level);
        marrowfin::MarkupNode node;
        size_t pos = 0;
        size_t starts = 0;
        for (;;) {
            if (text[pos] != u'<' && text[pos] != 0)
                pos = marrowfin::FindUnitBefore(text.c_str(), pos + 1, text.size(), u'<');
            tokenizer.Read(pos, node);
            if (node.kind == marrowfin::NodeEndOfText) break;
            starts += node.kind == marrowfin::NodeStartTag;
            pos += node.length;
        }
        benchmark::DoNotOptimize(starts);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(in.bytes.size()));
}
BENCHMARK(BM_MarkupStage_Decode)->Apply(Args);
BENCHMARK(BM_MarkupStage_Tokenise)->Apply([](benchmark::internal::Benchmark* b) {
    b->ArgNames({"doc", "level"})->ArgsProduct({{0, 1, 2}, {0, 1, 2}});
    Repeated(b);
});
BENCHMARK(BM_MarkupStage_SetText)->Apply(Args);

}  // namespace

int main(int argc, char** argv) {
    xmlMemSetup(CountedFree, CountedMalloc, CountedRealloc, CountedStrdup);
    xmlInitParser();
    pugi::set_memory_management_functions(CountedMalloc, CountedFree);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    xmlCleanupParser();
    return 0;
}
