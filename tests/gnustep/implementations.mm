// The implementations that the interface suites run over here: those of macOS, without the virtual ones.
#include "tests/interfaces/implementations.h"

std::vector<Implementation<FileSystemSubject>> fileSystems() { return {nativeFileSystem()}; }

std::vector<Implementation<PropertyLists>> propertyLists() { return {nativePropertyLists()}; }

std::vector<Implementation<UserDefaultsSubject>> userDefaults() { return {nativeUserDefaults()}; }

std::vector<Implementation<Processes>> processes() { return {nativeProcesses()}; }

std::vector<Implementation<MainLoopSubject>> mainLoops() { return nativeMainLoops(); }
