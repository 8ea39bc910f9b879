#pragma once
// Loading and unloading the module: what it builds up at load and takes down at unload.
namespace tv::host {

// Messages of the module's entry point.
inline constexpr int kInitAppMsg = 1;
inline constexpr int kUnloadAppMsg = 2;

// The module's entry: load on kInitAppMsg, unload on kUnloadAppMsg, nothing otherwise. Always 0.
int ModuleEntryPoint(int message, void* appId);

// Safe to call twice: what exists already is kept or replaced, never doubled.
void OnLoad();
void OnUnload();
bool IsLoaded();
// Lets drawings read from now on bring the module's own entities back alive (signatures); the
// program calls it before it reads a drawing, as loading the module does.
void RegisterEntityReaders();

}  // namespace tv::host
