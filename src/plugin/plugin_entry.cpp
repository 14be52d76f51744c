#include "plugin/plugin_entry.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <utility>

#include "host/host_services.h"
#include "image/image_record.h"
#include "plugin/registration.h"

namespace zvk::plugin {

namespace {

int32_t TableVersion(double hostVersion) {
  if (hostVersion >= 2013.03) return 12;
  if (hostVersion >= 2013.0) return 11;
  if (hostVersion >= 2012.0) return 10;
  return 9;
}

}  // namespace

void StartPlugin(REALresolver resolver) {
  gResolver = resolver;
  HostEntry<void(int32_t)> registerPluginVersion{"RegisterPluginVersion"};
  HostEntry<double()> getHostVersion{"REALGetRBVersion"};
  registerPluginVersion.Resolves();
  rbversion = getHostVersion();
  CurrentREALControlVersion = TableVersion(rbversion);
  registerPluginVersion(CurrentREALControlVersion);

  // A library that the development environment merely loads keeps its page size and leaves the random sequence alone.
  if (REALinRuntime()) {
    PageSize = std::max(getpagesize(), 4096);
    std::srand(static_cast<unsigned>(std::time(nullptr)));
  }

  RewriteConstants(PictureDefinition.constants, PictureDefinition.constantCount);
  FixConsoleFlags(&PictureDefinition);
  FixConsoleFlags(&PictureFactoryDefinition);
  MyREALRegisterClass(&PictureDefinition);
  MyREALRegisterClass(&PictureFactoryDefinition);
}

}  // namespace zvk::plugin

extern "C" void REALPluginMain(REALresolver resolver) {
  // The class tables can be fitted to a host once only.
  static bool isStarted = false;
  if (!std::exchange(isStarted, true)) zvk::plugin::StartPlugin(resolver);
}
