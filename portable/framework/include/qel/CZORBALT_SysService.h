#pragma once

#include "qel/CZORBALT_ServerService.h"

/// Base of providers that report on the machine itself. Constructed with the trace category, the vendor and
/// the version of the provider: `CZORBALT_SysService("msraid", "zorbalt", "2.10")`.
class QEL_API CZORBALT_SysService : public CZORBALT_ServerService {
  public:
    CZORBALT_SysService(std::string category, std::string vendor, std::string version);
    ~CZORBALT_SysService() override;
};
