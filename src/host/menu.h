#pragma once
// The popup menu of the module. This platform has no menu bar: building it only records that the
// menu stands, so that the console can list the commands under their captions.
namespace tv::host {

void BuildMenu();
bool MenuBuilt();

}  // namespace tv::host
