#include "host/module_entry.h"

#include <array>
#include <memory>
#include <string_view>

#include "host/command_table.h"
#include "host/custom_entity.h"
#include "host/doc_state.h"
#include "host/editor.h"
#include "host/menu.h"
#include "plot/plotter_lock.h"
#include "plot/review_forms.h"
#include "settings/config.h"
#include "settings/folders.h"
#include "signing/sign_entity.h"
#include "signing/sign_library.h"
#include "signing/stamp_library.h"
#include "titleblock/tk_library.h"

namespace tv::host {

namespace {

// The module's own entity classes, in the order they are registered; unload deletes them in the same order.
constexpr std::array<std::string_view, 6> kRuntimeClasses{"Temp_PlotRec", "Temp_PlotRec2", "Sign_Base",
                                                          "TV_Sign_Class", "Temp_Sign", "My_PLine"};

struct ModuleState {
  bool loaded = false;
  std::unique_ptr<MyAcEditorReactor> editorReactor;
  bool keyWatcherRegistered = false;
  std::unique_ptr<DocTracker> docTracker;
};

ModuleState& State() {
  static ModuleState state;
  return state;
}

}  // namespace

int ModuleEntryPoint(int message, void*) {
  if (message == kInitAppMsg)
    OnLoad();
  else if (message == kUnloadAppMsg)
    OnUnload();
  return 0;
}

void OnLoad() {
  ModuleState& state = State();
  settings::ComputeFolders();
  settings::LoadConfig(settings::GlobalConfig(), false);
  titleblock::LoadTkFile(titleblock::GlobalTkLibrary(), false);
  signing::LoadSignLibrary(signing::GlobalSignLibrary(), settings::SignLibraryPath(), false);
  signing::LoadStampLibrary(signing::GlobalStampLibrary(), settings::StampLibraryPath(), false);
  RegisterCommands();
  BuildMenu();
  AttachMonitor();
  settings::LoadIni(settings::GlobalIni());
  if (settings::GlobalIni().first_run_done == 0) settings::RunFirstRunSteps();
  if (!state.editorReactor) state.editorReactor = std::make_unique<MyAcEditorReactor>();
  state.keyWatcherRegistered = true;
  if (!state.docTracker) state.docTracker = std::make_unique<DocTracker>();
  state.docTracker->enterCurrentDocument();
  // The drawing now current brings its own plot settings, or takes the user's last ones.
  settings::LoadDwgPlotSetting(settings::CurrentPlotSetting());
  for (std::string_view name : kRuntimeClasses) RegisterEntityClass(std::string(name), "AcDbEntity");
  RegisterEntityReaders();
  // An interrupted run may have left file dialogs off.
  SetVar("FILEDIA", std::int32_t{1});
  settings::SaveIni(settings::GlobalIni());
  state.loaded = true;
}

void OnUnload() {
  ModuleState& state = State();
  plot::DestroyReviewForms();
  plot::ReleasePlotterFiles();
  settings::SaveConfig(settings::GlobalConfig(), false, false);
  titleblock::ClearLibrary(titleblock::GlobalTkLibrary());
  signing::ClearSignLibrary(signing::GlobalSignLibrary());
  signing::ClearStampLibrary(signing::GlobalStampLibrary());
  CurrentEditor().removeGroup(kCommandGroup);
  DetachMonitor();
  state.editorReactor.reset();
  state.keyWatcherRegistered = false;
  state.docTracker.reset();
  for (std::string_view name : kRuntimeClasses) DeleteEntityClass(std::string(name));
  state.loaded = false;
}

bool IsLoaded() { return State().loaded; }

void RegisterEntityReaders() { signing::RegisterSignClasses(); }

}  // namespace tv::host
