#pragma once
// The registry's text export format ("REGEDIT4"), in which the hives lie: the
// reader, the writer of values, the edits that change only the lines of what
// they write, and the index of a hive text's keys and values that the
// registry calls answer from. Key and value names compare as the registry
// compares them, without regard to case.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Registry.h"

// The hive text format on its own, for tools and the fuzz target.
namespace regtext {
struct Value {
    std::string name;  // empty for the default value
    DWORD type = REG_NONE;
    std::string data;  // the stored bytes
};
struct Section {
    std::vector<std::string> path;  // key names below the root
    std::vector<Value> values;
};
// Parses the text of a hive of root `rootName` ("HKEY_CURRENT_USER"). Sections
// of another root and lines it can't read are passed over. Sections come in
// the order of the text, possibly repeated. A key deeper than 512 levels makes
// the text a damaged hive: nothing of it is read, and `damaged` (when given)
// is set.
std::vector<Section> Parse(const std::string& text, const std::string& rootName, bool* damaged = nullptr);
// One value's line or lines, as the hive file holds it.
std::string FormatValue(const Value& value);
// Reads a hive text into keys and writes them back out in order of name, as a
// hive is written when nothing of its file is to be kept.
std::string Canonical(const std::string& text, const std::string& rootName);

// Edits of a hive text. Each gives the text with one change made, and every
// line that is not part of the change stays as it was, line end included. The
// lines of a value are its line and the lines that continue it after a line
// ending in a backslash; the lines of a key are its section headers and the
// lines of its values. New lines take the line end of the text's first line;
// a last line without a line end gets one when a line is put behind it, and
// behind a value that the text ends in the middle of (its last line asks for
// one more) a blank line ends the value first.
// `key` names the key's path below the root, spelled as it is to be written.
// An empty text is a new hive file, "REGEDIT4" and nothing else; a damaged
// text is given back unchanged.
//
// Sets a value: its last line or lines in the key's sections are replaced,
// and a value the key does not have yet goes at the end of the key's last
// section (behind its last line that is not blank and not a comment). A key
// without a section of its own gets one, appended at the end of the text.
std::string WithValue(const std::string& text, const std::string& rootName, const std::vector<std::string>& key,
                      const Value& value);
// Removes every line of the value `name` of the key.
std::string WithoutValue(const std::string& text, const std::string& rootName, const std::vector<std::string>& key,
                         const std::string& name);
// Adds a key that does not exist yet: a section of its own is appended at the
// end of the text, set off by a blank line.
std::string WithKey(const std::string& text, const std::string& rootName, const std::vector<std::string>& key);
// Removes a key that has no sub-keys: its section headers, each with a blank
// line right in front of it, and its values' lines. Comments and lines the
// reader passes over inside its sections stay. When the key was all that kept
// its parent key, the first of its headers becomes the parent's header.
std::string WithoutKey(const std::string& text, const std::string& rootName, const std::vector<std::string>& key);

// ---- Names --------------------------------------------------------------------

// Key and value names compare as the registry compares them: without regard
// to case, and ordered by their upper-case form.
int CompareNames(std::string_view a, std::string_view b);

bool SameName(std::string_view a, std::string_view b);

// The limits of the registry: a key name has at most 255 characters, a value
// name 16383, and keys nest at most 512 deep: a key may have 512 names in its
// path below the root, not 513.
constexpr size_t kMaxKeyName = 255;
constexpr size_t kMaxValueName = 16383;
constexpr size_t kMaxDepth = 512;

// Names reach the registry as zero-terminated texts.
std::string_view CText(std::string_view s);

bool HasLineBreak(std::string_view s);

// Splits a key path at its backslashes; empty parts are passed over.
bool SplitPath(const std::string& sub, std::vector<std::string>& parts);

// The next name of a key path that stands in `text` from `pos` to `end`, with
// empty parts passed over; `pos` is left behind the name.
bool NextName(std::string_view text, size_t& pos, size_t end, std::string_view& name);

// ---- Keys in memory -----------------------------------------------------------

// A read-only index of the keys and values of a hive text, which it holds. It
// is built anew from the text at every read and every write, so what the calls
// answer is always what the file says. Key names are not copied: a key is a
// node that points to its names in a section header. A chain of keys with one
// sub-key each, down to a key of a section or a fork, is one node, so a deep
// path costs as much as one key; values are decoded once into one pool. What
// the index takes is a small multiple of the text's size, whatever its shape.
class Index {
public:
    // A key: a node, and how far along the names that lead to the node it
    // stands (the text position behind its own name). A key at `at ==
    // edgeEnd` is the node itself; one before is a key that has only the next
    // name on the way as its sub-key.
    struct Key {
        uint32_t node = 0;
        uint32_t at = 0;
    };
    struct ValueView {
        std::string_view name;
        DWORD type = REG_NONE;
        std::string_view data;
    };

    Index() : nodes_(1), childStart_(2, 0) {}  // the root, which always exists
    void Clear() { *this = Index(); }
    const std::string& Text() const { return text_; }

    // Reads a hive text; false, leaving the index empty, when it is damaged.
    bool Build(std::string text, std::string_view rootName);

    Key Root() const { return {}; }
    bool Find(Key from, const std::vector<std::string>& parts, Key& out) const {
        Key k = from;
        for (const auto& part : parts)
            if (!Step(k, part)) return false;
        out = k;
        return true;
    }
    // The stored spelling of the leading names of `parts` that exist.
    std::vector<std::string> Spell(const std::vector<std::string>& parts) const {
        std::vector<std::string> spelled;
        Key k = Root();
        for (const auto& part : parts) {
            if (!Step(k, part)) break;
            spelled.emplace_back(Name(k));
        }
        return spelled;
    }
    size_t SubkeyCount(Key k) const { return AtNode(k) ? ChildCount(k.node) : 1; }
    // In order of name.
    std::string_view SubkeyName(Key k, size_t i) const {
        if (AtNode(k)) return FirstName(children_[childStart_[k.node] + i]);
        std::string_view name;
        size_t pos = k.at;
        NextName(text_, pos, nodes_[k.node].edgeEnd, name);
        return name;
    }
    size_t ValueCount(Key k) const {
        if (!AtNode(k)) return 0;
        const auto [b, e] = Values(k.node);
        return e - b;
    }
    // In the order the values were first written.
    ValueView ValueAt(Key k, size_t i) const { return View(values_[order_[Values(k.node).first + i]]); }
    bool FindValue(Key k, std::string_view name, ValueView& out) const {
        if (!AtNode(k)) return false;
        const auto [b, e] = Values(k.node);
        const auto first = values_.begin() + static_cast<std::ptrdiff_t>(b);
        const auto last = values_.begin() + static_cast<std::ptrdiff_t>(e);
        const auto it = std::lower_bound(
            first, last, name, [&](const Val& v, std::string_view p) { return CompareNames(NameOf(v), p) < 0; });
        if (it == last || !SameName(NameOf(*it), name)) return false;
        out = View(*it);
        return true;
    }
    // Writes every key in order of name, as a new hive file holds them.
    void WriteAll(std::string_view rootName, std::string& out) const {
        std::string path(rootName);
        Write(0, path, out);
    }

private:
    struct Node {
        uint32_t edgeBegin = 0;  // the names from the parent's key to this one's
        uint32_t edgeEnd = 0;
    };
    struct Val {
        uint32_t key;    // while building: the section, then the node
        uint32_t order;  // where it first stands in the text
        uint32_t nameOff, nameLen, dataOff, dataLen;  // in pool_
        DWORD type;
    };
    struct Span {
        uint32_t begin, end;
    };
    static constexpr uint32_t kNone = std::numeric_limits<uint32_t>::max();

    bool AtNode(Key k) const { return k.at == nodes_[k.node].edgeEnd; }
    size_t ChildCount(uint32_t node) const { return childStart_[node + 1] - childStart_[node]; }
    // One name down from a key.
    bool Step(Key& k, std::string_view part) const {
        std::string_view name;
        if (AtNode(k)) {
            const auto first = children_.begin() + childStart_[k.node];
            const auto last = children_.begin() + childStart_[k.node + 1];
            const auto it = std::lower_bound(
                first, last, part, [&](uint32_t c, std::string_view p) { return CompareNames(FirstName(c), p) < 0; });
            if (it == last || !SameName(FirstName(*it), part)) return false;
            size_t pos = nodes_[*it].edgeBegin;
            NextName(text_, pos, nodes_[*it].edgeEnd, name);
            k = {*it, static_cast<uint32_t>(pos)};
            return true;
        }
        size_t pos = k.at;
        NextName(text_, pos, nodes_[k.node].edgeEnd, name);
        if (!SameName(name, part)) return false;
        k.at = static_cast<uint32_t>(pos);
        return true;
    }
    std::string_view FirstName(uint32_t node) const {
        std::string_view name;
        size_t pos = nodes_[node].edgeBegin;
        NextName(text_, pos, nodes_[node].edgeEnd, name);
        return name;
    }
    // The last name of a key: the one that ends at `at`. A header path starts
    // behind the root's backslash, so a name always has one in front of it.
    std::string_view Name(Key k) const {
        size_t start = k.at;
        while (start > 0 && text_[start - 1] != '\\') --start;
        return std::string_view(text_).substr(start, k.at - start);
    }
    // Where a node's values stand in values_ and order_.
    std::pair<size_t, size_t> Values(uint32_t node) const {
        const auto range = std::equal_range(values_.begin(), values_.end(), node, KeyLess());
        return {static_cast<size_t>(range.first - values_.begin()), static_cast<size_t>(range.second - values_.begin())};
    }
    struct KeyLess {
        bool operator()(const Val& v, uint32_t key) const { return v.key < key; }
        bool operator()(uint32_t key, const Val& v) const { return key < v.key; }
    };
    std::string_view NameOf(const Val& v) const { return std::string_view(pool_).substr(v.nameOff, v.nameLen); }
    ValueView View(const Val& v) const {
        return {NameOf(v), v.type, std::string_view(pool_).substr(v.dataOff, v.dataLen)};
    }
    void Write(uint32_t node, std::string& path, std::string& out) const {
        const auto [b, e] = Values(node);
        if (e > b || (ChildCount(node) == 0 && node != 0)) {
            out += "\n[";
            out += path;
            out += "]\n";
            for (size_t i = b; i < e; ++i) {
                const ValueView v = View(values_[order_[i]]);
                out += regtext::FormatValue({std::string(v.name), v.type, std::string(v.data)});
            }
        }
        for (size_t i = childStart_[node]; i < childStart_[node + 1]; ++i) {
            const uint32_t child = children_[i];
            const size_t length = path.size();
            size_t pos = nodes_[child].edgeBegin;
            std::string_view name;
            while (NextName(text_, pos, nodes_[child].edgeEnd, name)) {
                path += '\\';
                path += name;
            }
            Write(child, path, out);
            path.resize(length);
        }
    }

    std::string text_;
    std::string pool_;                  // the names and data of the values
    std::vector<Node> nodes_;           // the root first
    std::vector<uint32_t> childStart_;  // node v's children: children_[childStart_[v] .. childStart_[v + 1])
    std::vector<uint32_t> children_;    // each node's children together, in order of name
    std::vector<Val> values_;           // in order of key, then of name
    std::vector<uint32_t> order_;       // into values_: in order of key, then of first place
};

}  // namespace regtext
