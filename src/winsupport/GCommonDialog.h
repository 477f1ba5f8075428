#pragma once
// The working half of the common dialog object: it builds the platform's
// dialog record, calls the platform and copies the results back into the
// arguments, which is how its caller receives them.
#include <array>
#include <cstdint>
#include <string>

class cCommonDialog;

// The arguments of VBGetOpenFileName, in their order, with the defaults a
// direct caller gets. Results come back in the same fields.
struct OpenFileNameArgs {
    std::string Filename;
    std::string FileTitle;
    bool FileMustExist = true;
    bool MultiSelect = false;
    bool ReadOnly = false;
    bool HideReadOnly = false;
    std::string Filter = "All (*.*)| *.*";
    int32_t FilterIndex = 1;
    std::string InitDir;
    std::string DlgTitle;
    std::string DefaultExt;
    int32_t Owner = -1;
    int32_t Flags = 0;
    bool Hook = false;
    cCommonDialog* DialogObject = nullptr;
};

// The arguments of VBGetSaveFileName, likewise.
struct SaveFileNameArgs {
    std::string Filename;
    std::string FileTitle;
    bool OverWritePrompt = true;
    std::string Filter = "All (*.*)| *.*";
    int32_t FilterIndex = 1;
    std::string InitDir;
    std::string DlgTitle;
    std::string DefaultExt;
    int32_t Owner = -1;
    int32_t Flags = 0;
    bool Hook = false;
    cCommonDialog* DialogObject = nullptr;
};

class GCommonDialog {
public:
    // The result of the last dialog call, and the platform's extended error
    // when that result was neither 0 nor 1.
    int32_t APIReturn() const { return m_lApiReturn; }
    int32_t ExtendedError() const { return m_lExtendedError; }

    // Show the open or the save dialog. True when the user chose a file.
    // A Filename longer than the dialog's buffer raises error 5 before the
    // dialog opens, and a Filter of more than 32767 characters error 6.
    bool VBGetOpenFileName(OpenFileNameArgs& args);
    bool VBGetSaveFileName(SaveFileNameArgs& args);

    // The 16 custom colours of the colour dialog; an index outside 0 to 15
    // raises error 9.
    int32_t CustomColor(int16_t i) const;
    void SetCustomColor(int16_t i, int32_t color);
    // Whether the colour dialog has filled the table yet.
    bool CustomColorsFilled() const { return m_bCustomColorsFilled; }

    // The dialog object whose hook runs while a hooked dialog is up.
    cCommonDialog* DialogObject() const { return m_oDialogObject; }

    // The filter pair numbered `lIndex` (from 1) of a zero-separated filter
    // text: its name, a zero character and its pattern. Empty when there is
    // no such pair.
    static std::string FilterEntry(const std::string& sFilter, int32_t lIndex);
    // A text up to its first zero character.
    static std::string CutAtZero(const std::string& s);
    // The platform's filter text: each ":" and "|" becomes a zero character,
    // and two zero characters end it.
    static std::string PlatformFilter(const std::string& sFilter);

private:
    int32_t m_lApiReturn = 0;
    int32_t m_lExtendedError = 0;
    std::array<int32_t, 16> m_alCustomColors{};
    bool m_bCustomColorsFilled = false;
    cCommonDialog* m_oDialogObject = nullptr;
};
