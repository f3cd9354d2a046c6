#include "Resources.h"

namespace redfish {
namespace {

constexpr std::string_view kHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<edmx:Edmx xmlns:edmx=\"http://docs.oasis-open.org/odata/ns/edmx\" Version=\"4.0\">\n";
constexpr std::string_view kServices =
    "  <edmx:DataServices>\n"
    "    <Schema xmlns=\"http://docs.oasis-open.org/odata/ns/edm\" Namespace=\"Service\">\n"
    "      <EntityContainer Name=\"Service\" Extends=\"ServiceRoot.v1_21_0.ServiceContainer\"/>\n"
    "    </Schema>\n";
constexpr std::string_view kTail = "  </edmx:DataServices>\n</edmx:Edmx>\n";

std::string Reference(const Type& type) {
    std::string text = "  <edmx:Reference Uri=\"http://redfish.dmtf.org/schemas/";
    text.append(type.isSwordfish ? "swordfish/" : "").append("v1/").append(type.name).append("_v1.xml\">\n");
    const auto include = [&](std::string_view version) {
        text.append("    <edmx:Include Namespace=\"").append(type.name);
        text.append(version.empty() ? "" : ".").append(version).append("\"/>\n");
    };
    include("");
    if (!type.version.empty()) {
        include(type.version);
    }
    return text + "  </edmx:Reference>\n";
}

/// Our own types, a complex type each.
std::string OemSchema() {
    std::string text = "    <Schema xmlns=\"http://docs.oasis-open.org/odata/ns/edm\" Namespace=\"";
    text.append(kOemNamespace).append("\">\n");
    std::string_view open;
    for (const OemKey& key : OemKeys()) {
        if (key.type != open) {
            text.append(open.empty() ? "" : "      </ComplexType>\n");
            text.append("      <ComplexType Name=\"").append(key.type).append("\">\n");
            open = key.type;
        }
        text.append("        <Property Name=\"")
            .append(key.key)
            .append("\" Type=\"")
            .append(key.edm)
            .append("\"/>\n");
    }
    return text + "      </ComplexType>\n    </Schema>\n";
}

}  // namespace

std::string MetadataText() {
    std::string text(kHead);
    for (const Type& type : AllTypes()) {
        text += Reference(type);
    }
    text +=
        "  <edmx:Reference Uri=\"http://redfish.dmtf.org/schemas/v1/RedfishExtensions_v1.xml\">\n"
        "    <edmx:Include Namespace=\"RedfishExtensions.v1_0_0\" Alias=\"Redfish\"/>\n"
        "  </edmx:Reference>\n";
    return text.append(kServices) + OemSchema() + std::string(kTail);
}

Value MakeVersions(const World& /*world*/, const Subject& /*subject*/) {
    return {{"v1", std::string(kRootPath) + "/"}};
}

Value MakeOdata(const World& /*world*/, const Subject& /*subject*/) {
    Value value = {{"@odata.context", "/redfish/v1/$metadata"}};
    const auto add = [&](const char* name, const std::string& path) {
        value["value"].push_back({{"name", name}, {"kind", "Singleton"}, {"url", path}});
    };
    add("Service", std::string(kRootPath) + "/");
    add("Systems", kSystemsPath);
    add("Chassis", kAllChassisPath);
    add("EventService", kEventServicePath);
    add("SessionService", kSessionServicePath);
    add("Registries", kRegistriesPath);
    add("Sessions", kSessionsPath);
    return value;
}

}  // namespace redfish
