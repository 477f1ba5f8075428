// Reads arbitrary bytes as a hive file. Whatever the text, reading what a save
// of every key would write gives that same text again, and every value that
// was read is written in a form that reads back to it. The edits do what they
// say and nothing else: a value set in the text reads back as set, the other
// keys and values read as before, and every line that is not the value's stays
// as it was; a key added or removed changes that key alone. Each input tries
// one of the three edits, picked by its bytes, so that a run costs a few
// reads of the text rather than a dozen.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/RegistryText.h"

namespace {

const std::string kRoot = "HKEY_CURRENT_USER";

bool Same(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        auto up = [](char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; };
        if (up(a[i]) != up(b[i])) return false;
    }
    return true;
}

bool SamePath(const std::vector<std::string>& a, const std::vector<std::string>& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (!Same(a[i], b[i])) return false;
    return true;
}

// `a` begins with `b`, name by name, and is longer.
bool Below(const std::vector<std::string>& a, const std::vector<std::string>& b) {
    return a.size() > b.size() && SamePath(std::vector<std::string>(a.begin(), a.begin() + b.size()), b);
}

std::string Header(const std::vector<std::string>& path) {
    std::string out = "[" + kRoot;
    for (const auto& part : path) out += "\\" + part;
    return out + "]\n";
}

// The sections written out again, as a text that reads as they do.
std::string Text(const std::vector<regtext::Section>& sections) {
    std::string out = "REGEDIT4\n";
    for (const auto& s : sections) {
        out += Header(s.path);
        for (const auto& v : s.values) out += regtext::FormatValue(v);
    }
    return out;
}

void Check(bool ok) {
    if (!ok) std::abort();
}

// Bytes that are only line ends.
bool LineEndsOnly(const std::string& s) { return s.size() <= 4 && s.find_first_not_of("\r\n") == std::string::npos; }


using Sections = std::vector<regtext::Section>;

// Set a value of the first section's key (the name of its first value, or a
// new one), or of a new key when the text has none. It reads back as set, the
// rest reads as before, and a damaged text is left alone.
void CheckValueEdit(const std::string& text, size_t size, const Sections& sections, bool damaged) {
    const std::vector<std::string> key = sections.empty() ? std::vector<std::string>{"Fuzz"} : sections[0].path;
    regtext::Value value;
    value.name = !sections.empty() && !sections[0].values.empty() && size % 2 == 0 ? sections[0].values[0].name : "fuzz";
    value.type = size % 3 == 0 ? REG_SZ : REG_BINARY;
    value.data = text.substr(size - std::min<size_t>(size, 40));
    const std::string after = regtext::WithValue(text, kRoot, key, value);
    if (damaged) {
        Check(after == text);
        return;
    }
    const std::string base = text.empty() ? "REGEDIT4\n" : text;
    Sections expected = sections;
    expected.push_back({key, {value}});
    Check(regtext::Canonical(after, kRoot) == regtext::Canonical(Text(expected), kRoot));
    // The lines that are not the value's are those of the text: with the value
    // taken out of both, they differ at most by a line end put at the end.
    Sections without = sections;
    for (auto& s : without) {
        if (!SamePath(s.path, key)) continue;
        std::vector<regtext::Value> kept;
        for (auto& v : s.values)
            if (!Same(v.name, value.name)) kept.push_back(v);
        s.values = kept;
    }
    const std::string a = regtext::WithoutValue(base, kRoot, key, value.name);
    const std::string b = regtext::WithoutValue(after, kRoot, key, value.name);
    Check(regtext::Canonical(a, kRoot) == regtext::Canonical(Text(without), kRoot));
    if (sections.empty()) {
        Check(after.compare(0, base.size(), base) == 0);  // a new section at the end
    } else {
        Check(b.compare(0, a.size(), a) == 0 && LineEndsOnly(b.substr(a.size())));
    }
}

// A new key goes at the end of the text, which stays as it was before it; a
// damaged text takes no edit.
void CheckKeyAdded(const std::string& text, const Sections& sections, bool damaged) {
    const std::vector<std::string> added = {"Fuzz", "Added"};
    for (const auto& s : sections)
        if (SamePath(s.path, added) || Below(s.path, added)) return;
    const std::string withKey = regtext::WithKey(text, kRoot, added);
    if (damaged) {
        Check(withKey == text);
        return;
    }
    const std::string base = text.empty() ? "REGEDIT4\n" : text;
    Check(withKey.compare(0, base.size(), base) == 0);
    Sections expected = sections;
    expected.push_back({added, {}});
    Check(regtext::Canonical(withKey, kRoot) == regtext::Canonical(Text(expected), kRoot));
}

// The last section's key goes, when it has no sub-keys; a parent that it
// alone kept stays as a key.
void CheckKeyRemoved(const std::string& text, const Sections& sections, bool damaged) {
    if (damaged || sections.empty() || sections.back().path.empty()) return;
    const std::vector<std::string> gone = sections.back().path;
    for (const auto& s : sections)
        if (Below(s.path, gone)) return;
    const std::vector<std::string> parent(gone.begin(), gone.end() - 1);
    bool parentKept = parent.empty();
    for (const auto& s : sections)
        if (!SamePath(s.path, gone)) parentKept = parentKept || SamePath(s.path, parent) || Below(s.path, parent);
    // The parent's header takes the place of the key's first one, where it
    // keeps the spelling that the file gave the parent first.
    Sections expected;
    for (const auto& s : sections) {
        if (!SamePath(s.path, gone)) {
            expected.push_back(s);
        } else if (!parentKept) {
            expected.push_back({parent, {}});
            parentKept = true;
        }
    }
    const std::string withoutKey = regtext::WithoutKey(text, kRoot, gone);
    Check(regtext::Canonical(withoutKey, kRoot) == regtext::Canonical(Text(expected), kRoot));
    Check(withoutKey.size() <= text.size() + kRoot.size() + 2);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    bool damaged = false;
    const auto sections = regtext::Parse(text, kRoot, &damaged);
    for (const auto& section : sections) {
        for (const auto& value : section.values) {
            const auto again = regtext::Parse("[HKCU]\n" + regtext::FormatValue(value), kRoot);
            Check(again.size() == 1 && again[0].values.size() == 1);
            const auto& v = again[0].values[0];
            Check(v.name == value.name && v.type == value.type && v.data == value.data);
        }
    }
    const std::string once = regtext::Canonical(text, kRoot);
    Check(regtext::Canonical(once, kRoot) == once);

    switch ((size + (size != 0 ? data[size / 2] : 0)) % 3) {
    case 0:
        CheckValueEdit(text, size, sections, damaged);
        break;
    case 1:
        CheckKeyAdded(text, sections, damaged);
        break;
    default:
        CheckKeyRemoved(text, sections, damaged);
        break;
    }
    return 0;
}
