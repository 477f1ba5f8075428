#include "platform/RegistryText.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>
#include <numeric>
#include <string_view>

namespace regtext {

namespace {

char Upper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }

}  // namespace

// ---- Names --------------------------------------------------------------------

// Key and value names compare as the registry compares them: without regard
// to case, and ordered by their upper-case form.
int CompareNames(std::string_view a, std::string_view b) {
    const size_t n = std::min(a.size(), b.size());
    for (size_t i = 0; i < n; ++i) {
        const auto ca = static_cast<unsigned char>(Upper(a[i]));
        const auto cb = static_cast<unsigned char>(Upper(b[i]));
        if (ca != cb) return ca < cb ? -1 : 1;
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

bool SameName(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (Upper(a[i]) != Upper(b[i])) return false;
    return true;
}

// Names reach the registry as zero-terminated texts.
std::string_view CText(std::string_view s) {
    const size_t z = s.find('\0');
    return z == std::string_view::npos ? s : s.substr(0, z);
}

bool HasLineBreak(std::string_view s) { return s.find_first_of("\r\n") != std::string_view::npos; }

// Splits a key path at its backslashes; empty parts are passed over.
bool SplitPath(const std::string& sub, std::vector<std::string>& parts) {
    const std::string_view s = CText(sub);
    size_t start = 0;
    while (start <= s.size()) {
        size_t end = s.find('\\', start);
        if (end == std::string_view::npos) end = s.size();
        if (end > start) {
            const std::string_view part = s.substr(start, end - start);
            if (part.size() > kMaxKeyName || HasLineBreak(part)) return false;
            parts.emplace_back(part);
            if (parts.size() > kMaxDepth) return false;
        }
        start = end + 1;
    }
    return true;
}

// The next name of a key path that stands in `text` from `pos` to `end`, with
// empty parts passed over; `pos` is left behind the name.
bool NextName(std::string_view text, size_t& pos, size_t end, std::string_view& name) {
    while (pos < end && text[pos] == '\\') ++pos;
    if (pos >= end) return false;
    const size_t start = pos;
    while (pos < end && text[pos] != '\\') ++pos;
    name = text.substr(start, pos - start);
    return true;
}

namespace {

// What a hive file holds before anything is written into it.
constexpr std::string_view kNewHive = "REGEDIT4\n";

// ---- The hive text, line by line -------------------------------------------------

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// A byte-order mark of UTF-8 before the header is passed over.
size_t TextStart(std::string_view text) { return text.substr(0, 3) == "\xEF\xBB\xBF" ? 3 : 0; }

// Reads the lines of a text one at a time, without their line ends.
class Lines {
public:
    explicit Lines(std::string_view text) : text_(text), pos_(TextStart(text)) {}
    bool Next(std::string_view& line) {
        if (pos_ >= text_.size()) return false;
        size_t end = text_.find('\n', pos_);
        if (end == std::string_view::npos) end = text_.size();
        line = text_.substr(pos_, end - pos_);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        pos_ = end + 1;
        return true;
    }
    // Where the next line starts: behind the line end of the last line read.
    size_t Pos() const { return std::min(pos_, text_.size()); }

private:
    std::string_view text_;
    size_t pos_;
};

std::string_view TrimLeft(std::string_view s) {
    while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
    return s;
}

std::string_view TrimRight(std::string_view s) {
    while (!s.empty() && IsBlank(s.back())) s.remove_suffix(1);
    return s;
}

bool RootMatches(std::string_view given, std::string_view rootName) {
    if (SameName(given, rootName)) return true;
    static const std::pair<const char*, const char*> kShort[] = {
        {"HKCR", "HKEY_CLASSES_ROOT"}, {"HKCU", "HKEY_CURRENT_USER"}, {"HKLM", "HKEY_LOCAL_MACHINE"}};
    for (const auto& [abbr, full] : kShort)
        if (SameName(given, abbr) && rootName == full) return true;
    return false;
}

// A quoted text from just behind its opening quote up to its closing quote,
// with \\ and \" undone; `s` is left behind the closing quote.
bool ReadQuoted(std::string_view& s, std::string& out) {
    out.clear();
    size_t i = 0;
    while (i < s.size()) {
        const char c = s[i];
        if (c == '"') {
            s.remove_prefix(i + 1);
            return true;
        }
        if (c == '\\' && i + 1 < s.size() && (s[i + 1] == '\\' || s[i + 1] == '"')) {
            out += s[i + 1];
            i += 2;
            continue;
        }
        out += c;
        ++i;
    }
    return false;
}

// Comma-separated hex bytes, continued on the next line after a backslash.
// `dangling` tells that the last line asked for a next one and the text had
// none: a line put behind it would be read as more bytes.
bool ReadHexBytes(std::string_view s, Lines& lines, std::string& out, bool& dangling) {
    out.clear();
    dangling = false;
    for (;;) {
        s = TrimLeft(TrimRight(s));
        bool continues = false;
        if (!s.empty() && s.back() == '\\') {
            continues = true;
            s.remove_suffix(1);
        }
        while (!s.empty()) {
            s = TrimLeft(s);
            size_t n = 0;
            int value = 0;
            while (n < s.size() && n < 3 && HexDigit(s[n]) >= 0) value = value * 16 + HexDigit(s[n++]);
            if (n == 0 || n > 2) return false;
            out += static_cast<char>(value);
            s.remove_prefix(n);
            s = TrimLeft(s);
            if (s.empty()) break;
            if (s.front() != ',') return false;
            s.remove_prefix(1);
        }
        if (!continues) return true;
        std::string_view next;
        if (!lines.Next(next)) {
            dangling = true;
            return true;
        }
        s = next;
    }
}

// The data of a value line, behind its "=".
bool ReadData(std::string_view s, Lines& lines, regtext::Value& v, bool& dangling) {
    dangling = false;
    s = TrimLeft(s);
    if (!s.empty() && s.front() == '"') {
        s.remove_prefix(1);
        std::string text;
        if (!ReadQuoted(s, text)) return false;
        v.type = REG_SZ;
        v.data = std::move(text);
        v.data += '\0';
        return true;
    }
    auto startsWith = [&](const char* word) {
        const size_t n = std::strlen(word);
        if (s.size() < n) return false;
        for (size_t i = 0; i < n; ++i)
            if (Upper(s[i]) != Upper(word[i])) return false;
        s.remove_prefix(n);
        return true;
    };
    if (startsWith("dword:")) {
        s = TrimRight(s);
        if (s.empty() || s.size() > 8) return false;
        uint32_t value = 0;
        for (char c : s) {
            const int d = HexDigit(c);
            if (d < 0) return false;
            value = value * 16 + static_cast<uint32_t>(d);
        }
        v.type = REG_DWORD;
        v.data.resize(4);
        for (int i = 0; i < 4; ++i) v.data[static_cast<size_t>(i)] = static_cast<char>((value >> (8 * i)) & 0xFF);
        return true;
    }
    if (startsWith("hex:")) {
        v.type = REG_BINARY;
        return ReadHexBytes(s, lines, v.data, dangling);
    }
    if (startsWith("hex(")) {
        const size_t close = s.find(')');
        if (close == std::string_view::npos || close == 0 || close > 8) return false;
        uint32_t type = 0;
        for (size_t i = 0; i < close; ++i) {
            const int d = HexDigit(s[i]);
            if (d < 0) return false;
            type = type * 16 + static_cast<uint32_t>(d);
        }
        s.remove_prefix(close + 1);
        if (s.empty() || s.front() != ':') return false;
        s.remove_prefix(1);
        v.type = type;
        return ReadHexBytes(s, lines, v.data, dangling);
    }
    return false;
}

void AppendQuoted(std::string_view text, std::string& out) {
    out += '"';
    for (char c : text) {
        if (c == '\\' || c == '"') out += '\\';
        out += c;
    }
    out += '"';
}

// A text value is written between quotes when its bytes come back unchanged
// that way: one terminating zero, and no other zero and no line break.
bool PlainText(const regtext::Value& v) {
    if (v.type != REG_SZ || v.data.empty() || v.data.back() != '\0') return false;
    const std::string_view body(v.data.data(), v.data.size() - 1);
    return body.find_first_of(std::string_view("\0\r\n", 3)) == std::string_view::npos;
}

// What a piece of a hive text is to the reader.
enum class Kind {
    Blank,    // an empty line, or one of blanks only
    Comment,  // a line that begins with ';'
    Other,    // a line, or the lines of a value, that the reader passes over
    Header,   // the header of a section of a key of this hive
    Break,    // a line that begins with '[' and opens no section of this hive
    Value,    // a value of the key of the section it stands in
};

// One piece of a hive text: a line, or the lines of a value.
struct Record {
    Kind kind = Kind::Other;
    size_t begin = 0;  // its first byte
    size_t end = 0;    // behind the line end of its last line
    // A header: where its key path below the root stands in the text.
    size_t pathBegin = 0;
    size_t pathEnd = 0;
    regtext::Value value;  // a value: what it holds
    // The last line ends in a backslash that asked for one more line and the
    // text had none (only at the end of the text).
    bool dangling = false;
};

// Reads a hive text piece by piece, as the registry reads it. Everything that
// reads or edits hive text goes through here, so an edit sees the lines of a
// value exactly as the reader does.
class Scanner {
public:
    Scanner(std::string_view text, std::string_view rootName) : text_(text), root_(rootName), lines_(text) {}

    // The next piece; false at the end of the text and once it is damaged.
    bool Next(Record& r) {
        if (damaged_) return false;
        r.begin = lines_.Pos();
        std::string_view line;
        if (!lines_.Next(line)) return false;
        r.kind = Kind::Other;
        r.dangling = false;
        line = TrimLeft(line);
        if (line.empty()) {
            r.kind = Kind::Blank;
        } else if (line.front() == ';') {
            r.kind = Kind::Comment;
        } else if (line.front() == '[') {
            r.kind = Header(line, r);
            inSection_ = r.kind == Kind::Header;
        } else if (line.front() == '"' || line.front() == '@') {
            r.kind = ValueLine(line, r);
        }
        r.end = lines_.Pos();
        return !damaged_;
    }
    bool Damaged() const { return damaged_; }

private:
    Kind Header(std::string_view line, Record& r) {
        const size_t close = line.rfind(']');
        if (close == std::string_view::npos) return Kind::Break;
        const std::string_view inner = line.substr(1, close - 1);
        // "[-KEY]" removes a key in an import; a hive has nothing to remove.
        if (!inner.empty() && inner.front() == '-') return Kind::Break;
        const size_t sep = inner.find('\\');
        if (!RootMatches(inner.substr(0, sep), root_)) return Kind::Break;
        const std::string_view path = sep == std::string_view::npos ? std::string_view() : CText(inner.substr(sep + 1));
        // A root's own section has an empty path, which stands behind the root.
        const char* at = sep == std::string_view::npos ? inner.data() + inner.size() : path.data();
        r.pathBegin = static_cast<size_t>(at - text_.data());
        r.pathEnd = r.pathBegin + path.size();
        // The depth is counted whatever the names are: a key deeper than the
        // registry allows damages the hive even where a name can't be read.
        size_t depth = 0;
        bool readable = true;
        size_t pos = r.pathBegin;
        std::string_view name;
        while (NextName(text_, pos, r.pathEnd, name)) {
            if (++depth > kMaxDepth) {
                damaged_ = true;
                return Kind::Break;
            }
            if (name.size() > kMaxKeyName || HasLineBreak(name)) readable = false;
        }
        return readable ? Kind::Header : Kind::Break;
    }

    Kind ValueLine(std::string_view rest, Record& r) {
        regtext::Value& v = r.value;
        v.name.clear();
        v.type = REG_NONE;
        v.data.clear();
        if (rest.front() == '@') {
            rest.remove_prefix(1);
        } else {
            rest.remove_prefix(1);
            if (!ReadQuoted(rest, v.name)) return Kind::Other;
        }
        rest = TrimLeft(rest);
        if (rest.empty() || rest.front() != '=') return Kind::Other;
        rest.remove_prefix(1);
        const bool ok = ReadData(rest, lines_, v, r.dangling);
        if (!ok || !inSection_) return Kind::Other;
        v.name.resize(CText(v.name).size());
        if (v.name.size() > kMaxValueName) return Kind::Other;
        return Kind::Value;
    }

    std::string_view text_;
    std::string_view root_;
    Lines lines_;
    bool inSection_ = false;  // false: values here belong to no key of this hive
    bool damaged_ = false;
};

// Compares two key paths that stand in a text, name by name.
int ComparePaths(std::string_view text, size_t aBegin, size_t aEnd, size_t bBegin, size_t bEnd, size_t* common) {
    size_t same = 0;
    std::string_view a, b;
    for (;;) {
        const bool hasA = NextName(text, aBegin, aEnd, a);
        const bool hasB = NextName(text, bBegin, bEnd, b);
        int c = 0;
        if (!hasA || !hasB) {
            c = hasA == hasB ? 0 : (hasA ? 1 : -1);
        } else {
            c = CompareNames(a, b);
        }
        if (c != 0 || !hasA) {
            if (common != nullptr) *common = same;
            return c;
        }
        ++same;
    }
}

size_t CountNames(std::string_view text, size_t begin, size_t end) {
    size_t n = 0;
    std::string_view name;
    while (NextName(text, begin, end, name)) ++n;
    return n;
}

// How a path that stands in a text relates to a path of names: the same, the
// path below it (a sub-key of it, at any depth), or neither.
enum class Relation { Same, Below, Other };
Relation Relate(std::string_view text, size_t begin, size_t end, const std::vector<std::string>& key) {
    std::string_view name;
    for (const auto& part : key)
        if (!NextName(text, begin, end, name) || !SameName(name, part)) return Relation::Other;
    return NextName(text, begin, end, name) ? Relation::Below : Relation::Same;
}
}  // namespace

// ---- Keys in memory -----------------------------------------------------------

bool Index::Build(std::string text, std::string_view rootName) {
    Clear();
    if (text.size() >= kNone) return false;
    text_ = std::move(text);
    const std::string_view t = text_;

    // The sections of this hive's keys and their values, in the order of the
    // text. The text is read twice, first to count, so that every list is
    // taken once at its size. A name written again right after itself in the
    // same section only replaces the data, as it would in the end.
    std::vector<Span> sections;
    std::vector<Val> values;
    for (int pass = 0; pass < 2; ++pass) {
        const bool fill = pass == 1;
        size_t sectionCount = 0, valueCount = 0, poolSize = 0;
        size_t lastData = 0;   // the data size of the section's last value
        bool hasLast = false;  // the section has had a value
        std::string lastName;
        Scanner scan(t, rootName);
        Record r;
        while (scan.Next(r)) {
            if (r.kind == Kind::Header) {
                if (fill) sections.push_back({static_cast<uint32_t>(r.pathBegin), static_cast<uint32_t>(r.pathEnd)});
                ++sectionCount;
                hasLast = false;
            } else if (r.kind == Kind::Value) {
                const std::string& name = r.value.name;
                const std::string& data = r.value.data;
                if (hasLast && SameName(lastName, name)) {
                    poolSize = poolSize - lastData + data.size();
                    if (fill) {
                        Val& v = values.back();
                        pool_.resize(v.dataOff);
                        v.dataLen = static_cast<uint32_t>(data.size());
                        v.type = r.value.type;
                        pool_ += data;
                    }
                } else {
                    if (fill) {
                        Val v{};
                        v.key = static_cast<uint32_t>(sectionCount - 1);
                        v.order = static_cast<uint32_t>(valueCount);
                        v.nameOff = static_cast<uint32_t>(pool_.size());
                        v.nameLen = static_cast<uint32_t>(name.size());
                        pool_ += name;
                        v.dataOff = static_cast<uint32_t>(pool_.size());
                        v.dataLen = static_cast<uint32_t>(data.size());
                        pool_ += data;
                        v.type = r.value.type;
                        values.push_back(v);
                    }
                    ++valueCount;
                    poolSize += name.size() + data.size();
                    lastName = name;
                    hasLast = true;
                }
                lastData = data.size();
            }
        }
        if (scan.Damaged() || poolSize >= kNone) {
            Clear();
            return false;
        }
        if (!fill) {
            sections.reserve(sectionCount);
            values.reserve(valueCount);
            pool_.reserve(poolSize);
        }
    }

    // The sections in order of their paths; the same key's sections stay in
    // the order of the text.
    std::vector<uint32_t> sorted(sections.size());
    std::iota(sorted.begin(), sorted.end(), 0u);
    std::stable_sort(sorted.begin(), sorted.end(), [&](uint32_t a, uint32_t b) {
        return ComparePaths(t, sections[a].begin, sections[a].end, sections[b].begin, sections[b].end, nullptr) < 0;
    });
    auto samePath = [&](uint32_t a, uint32_t b) {
        return ComparePaths(t, sections[a].begin, sections[a].end, sections[b].begin, sections[b].end, nullptr) == 0;
    };

    // The keys as a tree whose chains of single keys are one node each, built
    // from the sorted paths as a compressed trie: each path shares with the
    // one before it the names they have in common. A first walk counts the
    // nodes, the second makes them.
    std::vector<uint32_t> parent, depth, first;  // first: the earliest section at or below a node
    std::vector<uint32_t> keyOf(sections.size());
    for (int pass = 0; pass < 2; ++pass) {
        const bool make = pass == 1;
        size_t count = 1;
        // The nodes along the last path, with their depths.
        std::vector<std::pair<uint32_t, uint32_t>> path{{0, 0}};
        auto newNode = [&](uint32_t p, uint32_t d) {
            if (make) {
                parent.push_back(p);
                depth.push_back(d);
                first.push_back(kNone);
            }
            return static_cast<uint32_t>(count++);
        };
        // A node's sub-tree is whole when it leaves the path.
        auto pop = [&] {
            const uint32_t v = path.back().first;
            path.pop_back();
            if (make) first[path.back().first] = std::min(first[path.back().first], first[v]);
            return v;
        };
        if (make) {
            parent.push_back(0);
            depth.push_back(0);
            first.push_back(kNone);
        }
        uint32_t previous = kNone;
        for (size_t i = 0; i < sorted.size();) {
            const uint32_t s = sorted[i];
            size_t j = i + 1;
            while (j < sorted.size() && samePath(sorted[j], s)) ++j;
            const auto d = static_cast<uint32_t>(CountNames(t, sections[s].begin, sections[s].end));
            size_t common = 0;
            if (previous != kNone)
                ComparePaths(t, sections[previous].begin, sections[previous].end, sections[s].begin, sections[s].end,
                             &common);
            uint32_t last = kNone;
            while (path.back().second > common) last = pop();
            if (path.back().second < common) {
                // The path leaves the last one inside a chain: the chain forks here.
                const uint32_t fork = newNode(path.back().first, static_cast<uint32_t>(common));
                if (make) {
                    parent[last] = fork;
                    first[fork] = first[last];
                }
                path.emplace_back(fork, static_cast<uint32_t>(common));
            }
            uint32_t node = path.back().first;
            if (d > common) {
                node = newNode(node, d);
                path.emplace_back(node, d);
            }
            if (make) {
                first[node] = std::min(first[node], s);  // the first of the group is the earliest
                for (size_t k = i; k < j; ++k) keyOf[sorted[k]] = node;
            }
            previous = s;
            i = j;
        }
        while (path.size() > 1) pop();
        if (!make) {
            parent.reserve(count);
            depth.reserve(count);
            first.reserve(count);
        }
    }
    std::vector<uint32_t>().swap(sorted);
    const size_t count = parent.size();

    // Each node's children together. A parent's children were made in order
    // of name, and a fork took the place of the child it split.
    childStart_.assign(count + 1, 0);
    for (size_t v = 1; v < count; ++v) ++childStart_[parent[v]];
    for (size_t v = 1; v <= count; ++v) childStart_[v] += childStart_[v - 1];
    children_.resize(count - 1);
    for (size_t v = count; v-- > 1;) children_[--childStart_[parent[v]]] = static_cast<uint32_t>(v);

    // A key keeps the spelling of the first section in the text that names
    // it: every key along a node's chain is named by the same sections, those
    // at or below the node, so the chain's names are read from the earliest
    // of them. Where that is the parent's section too, the chain goes on
    // behind the parent's; else the section's path is read from its start,
    // which happens once for each section.
    nodes_.resize(count);
    std::vector<uint32_t> chain;
    for (uint32_t v = 1; v < count; ++v) {
        chain.clear();
        for (uint32_t u = v; u != 0 && nodes_[u].edgeEnd == 0; u = parent[u]) chain.push_back(u);
        for (size_t i = chain.size(); i-- > 0;) {
            const uint32_t u = chain[i];
            const uint32_t p = parent[u];
            const Span& s = sections[first[u]];
            size_t pos = s.begin;
            std::string_view name;
            if (p != 0 && first[p] == first[u]) {
                pos = nodes_[p].edgeEnd;
            } else {
                for (uint32_t k = 0; k < depth[p]; ++k) NextName(t, pos, s.end, name);
            }
            nodes_[u].edgeBegin = static_cast<uint32_t>(pos);
            for (uint32_t k = depth[p]; k < depth[u]; ++k) NextName(t, pos, s.end, name);
            nodes_[u].edgeEnd = static_cast<uint32_t>(pos);
        }
    }
    std::vector<uint32_t>().swap(parent);
    std::vector<uint32_t>().swap(depth);
    std::vector<uint32_t>().swap(first);
    std::vector<Span>().swap(sections);

    // The values of a key: a name written again in any of the key's sections
    // takes the new data and keeps its first place and first spelling.
    for (auto& v : values) v.key = keyOf[v.key];
    std::vector<uint32_t>().swap(keyOf);
    std::sort(values.begin(), values.end(), [&](const Val& a, const Val& b) {
        if (a.key != b.key) return a.key < b.key;
        const int c = CompareNames(NameOf(a), NameOf(b));
        return c != 0 ? c < 0 : a.order < b.order;
    });
    size_t kept = 0;
    for (size_t i = 0; i < values.size();) {
        size_t j = i + 1;
        while (j < values.size() && values[j].key == values[i].key && SameName(NameOf(values[j]), NameOf(values[i]))) ++j;
        Val v = values[i];
        v.type = values[j - 1].type;
        v.dataOff = values[j - 1].dataOff;
        v.dataLen = values[j - 1].dataLen;
        values[kept++] = v;
        i = j;
    }
    values.resize(kept);
    values_ = std::move(values);
    order_.resize(values_.size());
    std::iota(order_.begin(), order_.end(), 0u);
    std::sort(order_.begin(), order_.end(), [&](uint32_t x, uint32_t y) {
        const Val& a = values_[x];
        const Val& b = values_[y];
        return a.key != b.key ? a.key < b.key : a.order < b.order;
    });
    return true;
}
namespace {

// ---- Edits of the text ------------------------------------------------------------

// The line end of the text's first line: new lines take it.
std::string_view LineEnd(std::string_view text) {
    const size_t nl = text.find('\n');
    return nl != std::string_view::npos && nl > 0 && text[nl - 1] == '\r' ? "\r\n" : "\n";
}

// Lines written with "\n" given the text's line end.
std::string WithLineEnds(std::string_view lines, std::string_view eol) {
    if (eol == "\n") return std::string(lines);
    std::string out;
    out.reserve(lines.size() + lines.size() / 16);
    for (char c : lines) {
        if (c == '\n') {
            out += eol;
        } else {
            out += c;
        }
    }
    return out;
}

std::string HeaderLine(std::string_view rootName, const std::vector<std::string>& key) {
    std::string out = "[";
    out += rootName;
    for (const auto& part : key) {
        out += '\\';
        out += part;
    }
    out += ']';
    return out;
}

// Puts whole lines into a text at `at`, the end of a piece. A last line
// without a line end gets one first; behind a dangling continuation a blank
// line ends the value, so the new lines are read on their own.
std::string InsertLines(std::string_view text, size_t at, std::string_view lines, bool dangling, std::string_view eol) {
    std::string out;
    out.reserve(text.size() + lines.size() + 4);
    out.append(text.substr(0, at));
    if (at > TextStart(text) && text[at - 1] != '\n') out += text[at - 1] == '\r' ? std::string_view("\n") : eol;
    if (dangling) out += eol;
    out += lines;
    out.append(text.substr(at));
    return out;
}

// One change of a text: the bytes [begin, end) give way to `with`.
struct Change {
    size_t begin;
    size_t end;
    std::string with;
};

// Applies changes that come in the order of the text and do not overlap.
std::string Apply(std::string_view text, const std::vector<Change>& changes) {
    std::string out;
    out.reserve(text.size());
    size_t pos = 0;
    for (const auto& c : changes) {
        out.append(text.substr(pos, c.begin - pos));
        out += c.with;
        pos = c.end;
    }
    out.append(text.substr(pos));
    return out;
}
}  // namespace

// ---- The hive text ------------------------------------------------------------


std::vector<Section> Parse(const std::string& text, const std::string& rootName, bool* damaged) {
    std::vector<Section> sections;
    Scanner scan(text, rootName);
    Record r;
    while (scan.Next(r)) {
        if (r.kind == Kind::Header) {
            Section section;
            size_t pos = r.pathBegin;
            std::string_view name;
            while (NextName(text, pos, r.pathEnd, name)) section.path.emplace_back(name);
            sections.push_back(std::move(section));
        } else if (r.kind == Kind::Value) {
            sections.back().values.push_back(std::move(r.value));
        }
    }
    if (damaged != nullptr) *damaged = scan.Damaged();
    if (scan.Damaged()) sections.clear();
    return sections;
}

std::string FormatValue(const Value& v) {
    std::string out;
    if (v.name.empty()) {
        out += '@';
    } else {
        AppendQuoted(v.name, out);
    }
    out += '=';
    if (PlainText(v)) {
        AppendQuoted(v.data.substr(0, v.data.size() - 1), out);
        out += '\n';
        return out;
    }
    if (v.type == REG_DWORD && v.data.size() == 4) {
        uint32_t value = 0;
        for (int i = 3; i >= 0; --i) value = (value << 8) | static_cast<unsigned char>(v.data[static_cast<size_t>(i)]);
        char buf[16];
        std::snprintf(buf, sizeof buf, "dword:%08x\n", value);
        return out + buf;
    }
    static const char kHex[] = "0123456789abcdef";
    if (v.type == REG_BINARY) {
        out += "hex:";
    } else {
        char buf[24];
        std::snprintf(buf, sizeof buf, "hex(%x):", v.type);
        out += buf;
    }
    // Long runs of bytes wrap as the registry's export wraps them, a little
    // under 80 columns, each continued line indented by two blanks.
    size_t column = out.size();
    for (size_t i = 0; i < v.data.size(); ++i) {
        const auto b = static_cast<unsigned char>(v.data[i]);
        if (i > 0) {
            out += ',';
            ++column;
            if (column > 76) {
                out += "\\\n  ";
                column = 2;
            }
        }
        out += kHex[b >> 4];
        out += kHex[b & 15];
        column += 2;
    }
    out += '\n';
    return out;
}

std::string Canonical(const std::string& text, const std::string& rootName) {
    std::string out(kNewHive);
    Index index;
    if (index.Build(text, rootName)) index.WriteAll(rootName, out);
    return out;
}

std::string WithValue(const std::string& text, const std::string& rootName, const std::vector<std::string>& key,
                      const Value& value) {
    const std::string_view base = text.empty() ? kNewHive : std::string_view(text);
    Scanner scan(base, rootName);
    Record r;
    bool inKey = false;
    bool keySeen = false;
    size_t insertAt = 0;  // behind the last line of the key's last section
    bool insertDangling = false;
    bool lastDangling = false;
    size_t from = std::string::npos, to = 0;  // the lines of the value as it stands
    std::string spelling;
    while (scan.Next(r)) {
        lastDangling = r.dangling;
        switch (r.kind) {
            case Kind::Header:
                inKey = Relate(base, r.pathBegin, r.pathEnd, key) == Relation::Same;
                if (inKey) {
                    keySeen = true;
                    insertAt = r.end;
                    insertDangling = false;
                }
                break;
            case Kind::Break: inKey = false; break;
            case Kind::Value:
            case Kind::Other:
                if (!inKey) break;
                insertAt = r.end;
                insertDangling = r.dangling;
                // The last of the value's lines holds what the key reads.
                if (r.kind == Kind::Value && SameName(r.value.name, value.name)) {
                    from = r.begin;
                    to = r.end;
                    spelling = r.value.name;
                }
                break;
            case Kind::Blank:
            case Kind::Comment: break;
        }
    }
    if (scan.Damaged()) return text;
    const std::string_view eol = LineEnd(base);
    if (from != std::string::npos) {
        Value v = value;
        v.name = spelling;
        return Apply(base, {{from, to, WithLineEnds(FormatValue(v), eol)}});
    }
    const std::string lines = WithLineEnds(FormatValue(value), eol);
    if (keySeen) return InsertLines(base, insertAt, lines, insertDangling, eol);
    std::string section(eol);
    section += HeaderLine(rootName, key);
    section += eol;
    section += lines;
    return InsertLines(base, base.size(), section, lastDangling, eol);
}

std::string WithoutValue(const std::string& text, const std::string& rootName, const std::vector<std::string>& key,
                         const std::string& name) {
    Scanner scan(text, rootName);
    Record r;
    bool inKey = false;
    std::vector<Change> changes;
    while (scan.Next(r)) {
        if (r.kind == Kind::Header) inKey = Relate(text, r.pathBegin, r.pathEnd, key) == Relation::Same;
        if (r.kind == Kind::Break) inKey = false;
        if (r.kind == Kind::Value && inKey && SameName(r.value.name, name)) changes.push_back({r.begin, r.end, {}});
    }
    if (scan.Damaged() || changes.empty()) return text;
    return Apply(text, changes);
}

std::string WithKey(const std::string& text, const std::string& rootName, const std::vector<std::string>& key) {
    if (key.empty() || key.size() > kMaxDepth) return text;  // the root always exists
    const std::string_view base = text.empty() ? kNewHive : std::string_view(text);
    Scanner scan(base, rootName);
    Record r;
    bool lastDangling = false;
    while (scan.Next(r)) {
        lastDangling = r.dangling;
        if (r.kind == Kind::Header && Relate(base, r.pathBegin, r.pathEnd, key) != Relation::Other) return text;
    }
    if (scan.Damaged()) return text;
    const std::string_view eol = LineEnd(base);
    std::string section(eol);
    section += HeaderLine(rootName, key);
    section += eol;
    return InsertLines(base, base.size(), section, lastDangling, eol);
}

std::string WithoutKey(const std::string& text, const std::string& rootName, const std::vector<std::string>& key) {
    if (key.empty()) return text;  // a root can't go
    const std::vector<std::string> parentKey(key.begin(), key.end() - 1);
    Scanner scan(text, rootName);
    Record r;
    bool inKey = false;
    bool parentKept = parentKey.empty();  // by a section of its own or of another sub-key
    Kind previousKind = Kind::Other;      // the piece before this one
    size_t previousBegin = 0;
    std::vector<Change> changes;
    std::vector<size_t> headers;  // which changes are the key's headers
    size_t firstHeader = 0;       // where the first of them starts, blank line apart
    while (scan.Next(r)) {
        if (r.kind == Kind::Header) {
            const Relation relation = Relate(text, r.pathBegin, r.pathEnd, key);
            if (relation == Relation::Below) return text;  // it has sub-keys
            inKey = relation == Relation::Same;
            if (inKey) {
                // The blank line that sets the section off goes with it.
                const size_t begin = previousKind == Kind::Blank ? previousBegin : r.begin;
                if (headers.empty()) firstHeader = r.begin;
                headers.push_back(changes.size());
                changes.push_back({begin, r.end, {}});
            } else if (!parentKept && Relate(text, r.pathBegin, r.pathEnd, parentKey) != Relation::Other) {
                parentKept = true;
            }
        } else if (r.kind == Kind::Break) {
            inKey = false;
        } else if (r.kind == Kind::Value && inKey) {
            changes.push_back({r.begin, r.end, {}});
        }
        previousKind = r.kind;
        previousBegin = r.begin;
    }
    if (scan.Damaged() || headers.empty()) return text;
    if (!parentKept) {
        // The parent stood only by this key: its first header names the parent
        // now, and keeps its line end and the blank line before it.
        Change& c = changes[headers.front()];
        const std::string_view line = std::string_view(text).substr(firstHeader, c.end - firstHeader);
        c.begin = firstHeader;
        c.with = HeaderLine(rootName, parentKey);
        c.with.append(line.substr(line.find_last_not_of("\r\n") + 1));
    }
    return Apply(text, changes);
}

}  // namespace regtext
