#pragma once
// The recogniser of the common pictures that lie beside the game's files:
// BMP, GIF, JPEG and, through CTGAFile, TGA. It reads just enough of a file to
// name it and give its size, shows it in the picture pane through the
// runtime's LoadPicture, and saves what the pane shows as a BMP. It stands
// outside the file-object contract, though its operations have the same roles.
#include <cstdint>
#include <memory>
#include <string>

#include "platform/Files.h"

class CTGAFile;
class IFileHost;

// The picture kinds, as m_lKind holds them.
enum ImageKind : int32_t { ikTga = 0, ikGif = 2, ikBmp = 3, ikJpeg = 4 };

class CImageFiles {
public:
    explicit CImageFiles(IFileHost& host);
    ~CImageFiles();
    CImageFiles(const CImageFiles&) = delete;
    CImageFiles& operator=(const CImageFiles&) = delete;

    bool Initialize(const std::string& lpPathName);
    bool SaveAs();
    bool Show();
    std::string Information() const { return m_sName; }
    const std::string& Extension() const { return m_sExtension; }
    const std::string& Name() const { return m_sName; }
    bool IsAble2Show() const { return m_bAble2Show; }
    bool IsAble2Save() const { return m_bAble2Save; }

    // The kind and size of the last file recognised.
    int32_t Kind() const { return m_lKind; }
    int32_t Width() const { return m_lWidth; }
    int32_t Height() const { return m_lHeight; }

private:
    void ScanJpeg();
    void SetKind(int32_t kind, const char* extension, const char* name, bool able2Save);
    // The same with the size, which the name then ends with.
    void SetSizedKind(int32_t kind, const char* extension, const char* name, bool able2Save, int32_t width,
                      int32_t height);

    IFileHost& host_;
    HFILE m_hFile = 0;
    int32_t m_lWidth = 0;
    int32_t m_lHeight = 0;
    std::string m_sPathName;
    int32_t m_lKind = ikTga;
    bool m_bValid = false;
    bool m_bAble2Show = false;
    bool m_bAble2Save = false;
    std::string m_sName;
    std::string m_sExtension;
    std::unique_ptr<CTGAFile> m_oTga;
};
