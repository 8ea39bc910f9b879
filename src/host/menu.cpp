#include "host/menu.h"

namespace tv::host {

namespace {
bool g_menuBuilt = false;
}  // namespace

void BuildMenu() { g_menuBuilt = true; }
bool MenuBuilt() { return g_menuBuilt; }

}  // namespace tv::host
