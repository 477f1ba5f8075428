#pragma once
// The classes that the program has for the game's file types, as the
// recogniser creates them.
#include <cstdint>
#include <memory>

#include "identify/CNerhaltFiles.h"
#include "identify/IFileHost.h"

// The object of the class in charge of a type id, bound to `host`; nullptr for
// a type that the program only names.
std::unique_ptr<CNerhaltFile> CreateGameFileObject(int32_t id, IFileHost& host);

// A recogniser whose objects reach `host`.
FileObjectFactory GameFileClasses(IFileHost& host);
