#include "comlib/WbemObject.h"

namespace qel {

std::vector<WbemClass> ShippedClasses() {
    return {
        {"ZORBALT_MngSrvRaid",
         {},
         {
             {"GetInfo", {}, {{"XmlData", WbemType::String}}},
             {"GetPDInfo",
              {{"CtrlNo", WbemType::String}, {"EnclNo", WbemType::String}, {"PDNo", WbemType::String}},
              {{"XmlData", WbemType::String}}},
         }},
    };
}

}  // namespace qel
