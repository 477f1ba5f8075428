#pragma once
// The form runtime's services that the logic relies on: its error object, the
// program's own name and folder, DoEvents, and arithmetic that overflows the way
// the runtime's 16- and 32-bit integers do.
#include <cstdint>
#include <exception>
#include <functional>
#include <new>
#include <string>

// Error numbers of the runtime that the program raises or catches by number.
enum VbErrorNumber : int32_t {
    vbErrInvalidCall = 5,
    vbErrOverflow = 6,
    vbErrOutOfMemory = 7,
    vbErrSubscript = 9,
    vbErrDivisionByZero = 11,
    vbErrTypeMismatch = 13,
    vbErrBadFileNumber = 52,
    vbErrFileNotFound = 53,
    vbErrBadFileMode = 54,
    vbErrFileAlreadyOpen = 55,
    vbErrDiskFull = 61,
    vbErrInputPastEnd = 62,
    vbErrTooManyFiles = 67,
    vbErrPermissionDenied = 70,
    vbErrPathFileAccess = 75,
    vbErrPathNotFound = 76,
    vbErrObjectNotSet = 91,
};

// The runtime's error object, raised as a C++ exception.
class RuntimeError : public std::exception {
public:
    RuntimeError(int32_t number, std::string source, std::string description);
    int32_t Number;
    std::string Source;
    std::string Description;
    const char* what() const noexcept override { return Description.c_str(); }
};

// Runs one step of a procedure that passes over its failures, and answers
// whether the step ran to its end. What is passed over is a failure the
// program expects: a runtime error (RuntimeError), and a failed allocation
// (std::bad_alloc), which the runtime reports as its own error 7, "Out of
// memory", and which a count read from a damaged file can cause. Any other
// exception is a fault of the program and goes on to the caller.
template <typename F>
bool PassOver(F&& step) {
    try {
        step();
        return true;
    } catch (const RuntimeError&) {
    } catch (const std::bad_alloc&) {
    }
    return false;
}

// The same for a step that gives a value: the step's value, or what `failed`
// holds when the step fails (it is read at that moment, so a step may move it
// on as it goes).
template <typename F, typename T>
T PassOver(F&& step, const T& failed) {
    try {
        return step();
    } catch (const RuntimeError&) {
    } catch (const std::bad_alloc&) {
    }
    return failed;
}

// The runtime's own description of one of its error numbers ("Overflow", ...).
std::string VbErrorDescription(int32_t number);

// Raises a runtime error; an empty description takes the runtime's own text.
[[noreturn]] void RaiseError(int32_t number, const std::string& source = {}, const std::string& description = {});

namespace App {
// Base name of the executable, without folder or extension ("quarrin").
std::string EXEName();
// Folder of the executable, without a trailing separator.
std::string Path();
// Called once by each program's main with argv[0]; falls back to /proc/self/exe.
void Init(const char* argv0);
// Lets tests and tools pose as another executable.
void SetExecutable(const std::string& folder, const std::string& name);
}  // namespace App

// Lets pending window messages run. The front end fills the hook with its
// event loop; without one it does nothing.
void DoEvents();
void SetDoEventsHook(std::function<void()> hook);

// Arithmetic of the runtime's integer types: a result outside the type raises
// error 6, "Overflow".
int16_t VbAdd16(int32_t a, int32_t b);
int32_t VbAdd32(int64_t a, int64_t b);
int16_t VbToInteger(int64_t v);
int32_t VbToLong(int64_t v);
// Integer division (\) of 32-bit values, discarding the remainder: a divisor
// of 0 raises error 11, "Division by zero", and a quotient outside the type 6.
int32_t VbIntDiv(int32_t a, int32_t b);

// Val()-like conversion of a decimal text to a 32-bit signed integer: leading
// blanks ignored, digits up to the first other character. Raises 6 when the
// number is outside the 32-bit range.
int32_t VbCLng(const std::string& text);

// Trim on byte texts: the blanks at both ends go.
std::string VbTrim(const std::string& s);
// UCase and LCase fold the letters of the ANSI code page (Windows-1252), as the
// system does: the ASCII letters, the accented letters 0xC0 to 0xDE and 0xE0 to
// 0xFE apart from the signs 0xD7 and 0xF7, and the pairs 0x8A/0x9A (S caron),
// 0x8C/0x9C (OE), 0x8E/0x9E (Z caron) and 0x9F/0xFF (Y diaeresis). Sharp s
// (0xDF) and micro (0xB5) have no upper case and stay. Every comparison that
// ignores case goes through these.
char VbUCaseChar(char c);
char VbLCaseChar(char c);
std::string VbUCase(std::string s);
std::string VbLCase(std::string s);
// Replace every occurrence of `what` by `with`.
std::string VbReplace(const std::string& s, const std::string& what, const std::string& with);
