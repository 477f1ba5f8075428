#pragma once
// The runtime's dynamically typed value, in the kinds the program stores in it:
// nothing (Empty), a boolean, a 16- or 32-bit integer, a text, or an array of
// bytes. Conversions follow the runtime: a boolean becomes "True" or "False",
// Empty becomes "" or 0, and a text that is not a number can't become one
// (error 13, "Type mismatch").
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

class Variant {
public:
    // The runtime's VarType codes of the kinds held here.
    enum Kind : int32_t {
        vbEmpty = 0,
        vbInteger = 2,
        vbLong = 3,
        vbString = 8,
        vbBoolean = 11,
        vbByteArray = 8192 + 17,  // vbArray + vbByte
    };

    Variant() = default;
    Variant(bool b) : value_(b) {}
    Variant(int16_t i) : value_(i) {}
    Variant(int32_t l) : value_(l) {}
    Variant(std::string s) : value_(std::move(s)) {}
    Variant(const char* s) : value_(std::string(s)) {}
    Variant(std::vector<uint8_t> bytes) : value_(std::move(bytes)) {}

    Kind VarType() const;
    bool IsEmpty() const { return value_.index() == 0; }
    bool IsNumeric() const { return value_.index() == 2 || value_.index() == 3; }
    bool IsByteArray() const { return value_.index() == 5; }

    // CStr: Empty gives "", a boolean "True" or "False", an integer its decimal
    // digits, and a byte array its bytes as they stand.
    std::string ToString() const;
    // CLng: a text must hold a decimal number (blanks around it allowed);
    // True is -1. Raises 13 for what can't be converted, 6 out of range.
    int32_t ToLong() const;
    // CBool: a number is true when not 0; a text must be "True", "False" or a
    // number.
    bool ToBool() const;
    // The bytes of a byte array; empty for any other kind.
    const std::vector<uint8_t>& Bytes() const;

    // Same kind and same content.
    bool operator==(const Variant& other) const { return value_ == other.value_; }
    bool operator!=(const Variant& other) const { return !(*this == other); }

private:
    std::variant<std::monostate, bool, int16_t, int32_t, std::string, std::vector<uint8_t>> value_;
};
