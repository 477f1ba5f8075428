#include "platform/Variant.h"

#include <cctype>

#include "platform/Runtime.h"

Variant::Kind Variant::VarType() const {
    switch (value_.index()) {
        case 1: return vbBoolean;
        case 2: return vbInteger;
        case 3: return vbLong;
        case 4: return vbString;
        case 5: return vbByteArray;
        default: return vbEmpty;
    }
}

std::string Variant::ToString() const {
    switch (value_.index()) {
        case 1: return std::get<bool>(value_) ? "True" : "False";
        case 2: return std::to_string(std::get<int16_t>(value_));
        case 3: return std::to_string(std::get<int32_t>(value_));
        case 4: return std::get<std::string>(value_);
        case 5: {
            const auto& b = std::get<std::vector<uint8_t>>(value_);
            return std::string(b.begin(), b.end());
        }
        default: return {};
    }
}

namespace {
// A whole text as a decimal number, with blanks around it and a sign allowed.
bool ParseNumber(const std::string& s, int64_t& out) {
    size_t i = 0;
    while (i < s.size() && (s[i] == ' ' || s[i] == '\t')) ++i;
    bool negative = false;
    if (i < s.size() && (s[i] == '-' || s[i] == '+')) negative = s[i++] == '-';
    const size_t digits = i;
    int64_t value = 0;
    while (i < s.size() && std::isdigit(static_cast<unsigned char>(s[i]))) {
        if (value < (int64_t{1} << 40)) value = value * 10 + (s[i] - '0');
        ++i;
    }
    if (i == digits) return false;
    while (i < s.size() && (s[i] == ' ' || s[i] == '\t')) ++i;
    if (i != s.size()) return false;
    out = negative ? -value : value;
    return true;
}
}  // namespace

int32_t Variant::ToLong() const {
    switch (value_.index()) {
        case 0: return 0;
        case 1: return std::get<bool>(value_) ? -1 : 0;
        case 2: return std::get<int16_t>(value_);
        case 3: return std::get<int32_t>(value_);
        case 4: {
            const std::string& s = std::get<std::string>(value_);
            int64_t v = 0;
            if (VbUCase(VbTrim(s)) == "TRUE") return -1;
            if (VbUCase(VbTrim(s)) == "FALSE") return 0;
            if (!ParseNumber(s, v)) RaiseError(vbErrTypeMismatch);
            return VbToLong(v);
        }
        default: RaiseError(vbErrTypeMismatch);
    }
}

bool Variant::ToBool() const {
    switch (value_.index()) {
        case 0: return false;
        case 1: return std::get<bool>(value_);
        case 2:
        case 3:
        case 4: return ToLong() != 0;
        default: RaiseError(vbErrTypeMismatch);
    }
}

const std::vector<uint8_t>& Variant::Bytes() const {
    static const std::vector<uint8_t> kNone;
    if (value_.index() == 5) return std::get<std::vector<uint8_t>>(value_);
    return kNone;
}
