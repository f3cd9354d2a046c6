#include "Classes.h"

#include "HealthInstance.h"
#include "basics/Words.h"

#include "qel/IWbemClassObject.h"
#include "qel/IWbemObjectManager.h"

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>

namespace wbem {
namespace {

constexpr std::array kRaidMethods{"GetInfo", "GetPDInfo"};
constexpr std::string_view kReturnValue = "ReturnValue";

struct Release {
    void operator()(IWbemClassObject* object) const { object->Release(); }
};
using Object = std::unique_ptr<IWbemClassObject, Release>;

void Require(HRESULT result, const std::string& what) {
    if (result < 0) {
        throw std::runtime_error("the framework's class repository has no " + what);
    }
}

Type TypeOf(IWbemClassObject& instance, const std::string& name) {
    const std::pair<Type, WbemValue> samples[] = {{Type::Boolean, WbemValue(false)},
                                                  {Type::Sint32, WbemValue(std::int32_t{0})},
                                                  {Type::Uint32, WbemValue(std::uint32_t{0})},
                                                  {Type::String, WbemValue(std::string())}};
    for (const auto& [type, sample] : samples) {
        if (instance.Put(name.c_str(), sample) >= 0) {
            return type;
        }
    }
    throw std::runtime_error("the framework's class repository has an unknown type for " + name);
}

/// Of a class, or of a method's signature: what it declares, in its order.
std::vector<Property> PropertiesOf(IWbemClassObject& declaration, const std::string& what) {
    IWbemClassObject* place = nullptr;
    Require(declaration.SpawnInstance(0, &place), "instance of " + what);
    const Object instance(place);
    std::vector<std::string> names;
    Require(instance->GetNames(&names), "properties of " + what);
    std::vector<Property> properties;
    properties.reserve(names.size());
    for (const std::string& name : names) {
        properties.push_back({name, TypeOf(*instance, name)});
    }
    return properties;
}

Method ReadMethod(IWbemClassObject& definition, const std::string& name) {
    IWbemClassObject* inPlace = nullptr;
    IWbemClassObject* outPlace = nullptr;
    Require(definition.GetMethod(name.c_str(), 0, &inPlace, &outPlace), "method " + name);
    const Object in(inPlace);
    const Object out(outPlace);
    Method method{name, {}};
    for (const Property& each : PropertiesOf(*in, name)) {
        method.parameters.push_back({each.name, each.type, true, false});
    }
    for (const Property& each : PropertiesOf(*out, name)) {
        const auto known = std::find_if(method.parameters.begin(), method.parameters.end(),
                                        [&](const Parameter& other) { return other.name == each.name; });
        if (known != method.parameters.end()) {
            known->isOut = true;
        } else if (each.name != kReturnValue) {
            method.parameters.push_back({each.name, each.type, false, true});
        }
    }
    return method;
}

Class ReadRaidClass(IWbemObjectManager& repository) {
    IWbemClassObject* place = nullptr;
    Require(repository.GetObject(kRaidClass, 0, nullptr, &place, nullptr),
            std::string("class ") + kRaidClass);
    const Object definition(place);
    Class read{kRaidClass, PropertiesOf(*definition, kRaidClass), {}};
    for (const char* const method : kRaidMethods) {
        read.methods.push_back(ReadMethod(*definition, method));
    }
    return read;
}

template <typename Number>
bool IsNumber(std::string_view text) {
    return basics::NumberFrom<Number>(text.starts_with('+') ? text.substr(1) : text).has_value();
}

}  // namespace

const char* NameOf(Type type) {
    switch (type) {
        case Type::Boolean:
            return "boolean";
        case Type::Sint32:
            return "sint32";
        case Type::Uint32:
            return "uint32";
        case Type::DateTime:
            return "datetime";
        case Type::String:
            break;
    }
    return "string";
}

bool IsValue(std::string_view text, Type type) {
    switch (type) {
        case Type::Boolean:
            return basics::IsSameWord(text, "true") || basics::IsSameWord(text, "false");
        case Type::Sint32:
            return IsNumber<std::int32_t>(text);
        case Type::Uint32:
            return IsNumber<std::uint32_t>(text);
        case Type::DateTime:
        case Type::String:
            break;
    }
    return true;
}

const Method* Class::FindMethod(std::string_view called) const {
    const auto found = std::find_if(methods.begin(), methods.end(), [&](const Method& method) {
        return basics::IsSameWord(method.name, called);
    });
    return found == methods.end() ? nullptr : &*found;
}

Classes::Classes(IWbemObjectManager& repository) : m_All{ReadRaidClass(repository), HealthClass()} {}

const Class* Classes::Find(std::string_view called) const {
    const auto found = std::find_if(m_All.begin(), m_All.end(),
                                    [&](const Class& each) { return basics::IsSameWord(each.name, called); });
    return found == m_All.end() ? nullptr : &*found;
}

}  // namespace wbem
