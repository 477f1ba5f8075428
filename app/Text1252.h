#pragma once
// Texts of bytes at the boundary to Qt. Inside the program a text is bytes;
// a widget shows each byte as its Windows-1252 character, one byte to one
// character, so that a text that comes back from a widget has exactly the
// bytes it went in with. The five bytes that Windows-1252 leaves unassigned
// (0x81, 0x8D, 0x8F, 0x90, 0x9D) show as the control characters of the same
// number. Paths are not texts: they take QFile::encodeName and decodeName.
#include <QString>
#include <string>

QString FromBytes(const std::string& bytes);
// A character that Windows-1252 has no byte for becomes "?".
std::string ToBytes(const QString& text);
