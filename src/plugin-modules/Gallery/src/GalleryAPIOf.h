// The step up from a request to what its plug-in owns; defined beside GalleryPlugin.
#pragma once

#include <memory>

namespace KXP {
class PluginModuleBase;
}
class ZvGalleryAPI;

// The API object of the plug-in behind `module`; null when it could not be built or is gone. Worker only.
std::shared_ptr<ZvGalleryAPI> GalleryAPIOf(KXP::PluginModuleBase& module);
