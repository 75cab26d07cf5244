// The two steps up from what a plug-in owns to the plug-in itself; defined beside GalleryPlugin.
#pragma once

#include <memory>

namespace KXP {
class PluginModuleBase;
}
class GalleryPlugin;
class ZvGalleryAPI;

// The plug-in as the module that sends its messages.
KXP::PluginModuleBase& AsModule(GalleryPlugin& plugin);

// The API object of the plug-in behind `module`; null when it could not be built or is gone. Worker only.
std::shared_ptr<ZvGalleryAPI> GalleryAPIOf(KXP::PluginModuleBase& module);
