#include "qel/CZORBALT_SysService.h"

#include <utility>

CZORBALT_SysService::CZORBALT_SysService(std::string category, std::string vendor, std::string version)
    : CZORBALT_ServerService(std::move(category), std::move(vendor), std::move(version)) {}

CZORBALT_SysService::~CZORBALT_SysService() = default;
