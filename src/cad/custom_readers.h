#pragma once
// Readers of application classes: an entity of a class the drawing model doesn't know is read as a
// proxy (name and groups); when the application has said how to read its class, the proxy comes
// back to life as that application's entity.
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "cad/entities.h"

namespace tv::cad {

// The content for the groups of one entity (those after the common entity data); null when the
// groups don't make one, and the entity then stays a proxy.
using CustomReader = std::function<std::unique_ptr<CustomContent>(const Groups& groups)>;

// One reader per DXF name; registering a name again replaces its reader.
void RegisterCustomReader(const std::string& dxfName, CustomReader reader);
void RemoveCustomReader(std::string_view dxfName);

// The live entity for a proxy of a registered class, with the proxy's common data (id, owner,
// layer, colour …); null when no reader takes it.
std::unique_ptr<Entity> ReviveProxy(const ProxyEntity& proxy);

}  // namespace tv::cad
