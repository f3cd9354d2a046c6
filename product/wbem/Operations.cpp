#include "Operations.h"

#include "basics/Words.h"
#include "board/Messages.h"
#include "wbem/ObjectManager.h"

#include "qel/CStringUtil.h"

#include <algorithm>
#include <array>
#include <set>

namespace wbem {
namespace {

using basics::IsSameWord;
using Code = CimError::Code;

/// The system property of an input instance in which a caller hands over its application key.
constexpr const char* kAppKey = "__AppKey";

[[noreturn]] void RefuseArgument(const std::string& name, const std::string& why) {
    throw CimError(Code::InvalidParameter, "the parameter " + name + " " + why);
}

/// Every argument must be one of `known`, and be there once.
void RequireKnown(const Call& call, const std::vector<const char*>& known) {
    std::set<std::string> names;
    for (const Argument& argument : call.arguments) {
        const auto isIt = [&](const char* other) { return IsSameWord(argument.name, other); };
        if (std::none_of(known.begin(), known.end(), isIt)) {
            RefuseArgument(argument.name, "is unknown");
        }
        if (!names.insert(basics::InLowerCase(argument.name)).second) {
            RefuseArgument(argument.name, "is there more than once");
        }
    }
}

/// What an operation was given, in the form in which it takes it.
class Given final {
  public:
    explicit Given(const Call& call) : m_Call(call) {}

    [[nodiscard]] std::optional<std::string> ClassName() const {
        const Element* const value = Find("ClassName", "CLASSNAME");
        if (value == nullptr) {
            return std::nullopt;
        }
        const std::string* const name = value->Attribute("NAME");
        if (name == nullptr) {
            RefuseArgument("ClassName", "has no NAME");
        }
        return *name;
    }

    [[nodiscard]] const Element& InstanceName() const {
        const Element* const value = Find("InstanceName", "INSTANCENAME");
        if (value == nullptr) {
            RefuseArgument("InstanceName", "is missing");
        }
        return *value;
    }

    [[nodiscard]] std::string Text(const char* name) const {
        const Element* const value = Find(name, "VALUE");
        if (value == nullptr) {
            RefuseArgument(name, "is missing");
        }
        return value->text;
    }

    [[nodiscard]] bool Flag(const char* name, bool otherwise) const {
        const Element* const value = Find(name, "VALUE");
        if (value != nullptr && !IsValue(basics::Trimmed(value->text), Type::Boolean)) {
            RefuseArgument(name, "is neither TRUE nor FALSE");
        }
        return value != nullptr ? IsSameWord(basics::Trimmed(value->text), "true") : otherwise;
    }

    [[nodiscard]] Wanted TheWanted(bool qualifiersOtherwise) const {
        Wanted wanted{Flag("IncludeQualifiers", qualifiersOtherwise), Flag("IncludeClassOrigin", false)};
        // Nothing is inherited, so these change nothing.
        (void)Flag("LocalOnly", true);
        (void)Flag("DeepInheritance", false);
        if (const Element* const list = Find("PropertyList", "VALUE.ARRAY")) {
            wanted.properties.emplace();
            for (const Element& value : list->children) {
                wanted.properties->insert(basics::InLowerCase(value.text));
            }
        }
        return wanted;
    }

  private:
    /// Null where it was not given, or without a value.
    [[nodiscard]] const Element* Find(const char* name, std::string_view kind) const {
        for (const Argument& argument : m_Call.arguments) {
            if (IsSameWord(argument.name, name) && argument.value) {
                if (argument.value->name != kind) {
                    RefuseArgument(name, "must be a " + std::string(kind));
                }
                return &*argument.value;
            }
        }
        return nullptr;
    }

    const Call& m_Call;
};

const Class& ClassNamed(const std::string& name, const Classes& classes, Code code) {
    const Class* const found = classes.Find(name);
    if (found == nullptr) {
        throw CimError(code, "there is no class " + name);
    }
    return *found;
}

const Class& NeededClass(const Given& given, const Classes& classes, Code code) {
    const std::optional<std::string> name = given.ClassName();
    if (!name) {
        RefuseArgument("ClassName", "is missing");
    }
    return ClassNamed(*name, classes, code);
}

bool IsHealth(const Class& declaration) {
    return declaration.name == kHealthClass;
}

/// Whether the name is that of the one instance: `<KEYBINDING NAME="InstanceID"><KEYVALUE>`, or the value
/// alone, as it is the only key.
bool IsTheInstance(const Element& name) {
    const Element* holder = &name;
    if (const Element* const binding = name.Child("KEYBINDING")) {
        const std::string* const key = binding->Attribute("NAME");
        if (key == nullptr || !IsSameWord(*key, "InstanceID") || name.children.size() != 1) {
            return false;
        }
        holder = binding;
    }
    const Element* const value = holder->Child("KEYVALUE");
    return value != nullptr && value->text == kInstanceId;
}

/// The class of an instance that is there.
const Class& ClassOfInstance(const Given& given, const Classes& classes) {
    const Element& name = given.InstanceName();
    const std::string* const className = name.Attribute("CLASSNAME");
    if (className == nullptr) {
        RefuseArgument("InstanceName", "has no CLASSNAME");
    }
    const Class& declaration = ClassNamed(*className, classes, Code::InvalidClass);
    if (!IsHealth(declaration) || !IsTheInstance(name)) {
        throw CimError(Code::NotFound, "there is no such instance of " + declaration.name);
    }
    return declaration;
}

/// Below the class that is given there is none; without one, all are.
std::vector<const Class*> Below(const Given& given, const Classes& classes) {
    const std::optional<std::string> name = given.ClassName();
    std::vector<const Class*> found;
    if (name && !name->empty()) {
        (void)ClassNamed(*name, classes, Code::InvalidClass);
        return found;
    }
    for (const Class& each : classes.All()) {
        found.push_back(&each);
    }
    return found;
}

std::string GetClass(const Given& given, const Classes& classes, const board::Board& /*board*/) {
    std::string xml;
    AppendClass(xml, NeededClass(given, classes, Code::NotFound), given.TheWanted(true));
    return xml;
}

std::string EnumerateClasses(const Given& given, const Classes& classes, const board::Board& /*board*/) {
    const Wanted wanted = given.TheWanted(true);
    std::string xml;
    for (const Class* const each : Below(given, classes)) {
        AppendClass(xml, *each, wanted);
    }
    return xml;
}

std::string EnumerateClassNames(const Given& given, const Classes& classes, const board::Board& /*board*/) {
    (void)given.Flag("DeepInheritance", false);
    std::string xml;
    for (const Class* const each : Below(given, classes)) {
        AppendClassName(xml, *each);
    }
    return xml;
}

std::string EnumerateInstances(const Given& given, const Classes& classes, const board::Board& board) {
    const Class& declaration = NeededClass(given, classes, Code::InvalidClass);
    const Wanted wanted = given.TheWanted(false);
    std::string xml;
    if (IsHealth(declaration)) {
        xml += "<VALUE.NAMEDINSTANCE>";
        AppendInstanceName(xml);
        AppendInstance(xml, declaration, HealthValues(board), wanted);
        xml += "</VALUE.NAMEDINSTANCE>";
    }
    return xml;
}

std::string EnumerateInstanceNames(const Given& given, const Classes& classes,
                                   const board::Board& /*board*/) {
    std::string xml;
    if (IsHealth(NeededClass(given, classes, Code::InvalidClass))) {
        AppendInstanceName(xml);
    }
    return xml;
}

std::string GetInstance(const Given& given, const Classes& classes, const board::Board& board) {
    const Wanted wanted = given.TheWanted(false);
    std::string xml;
    AppendInstance(xml, ClassOfInstance(given, classes), HealthValues(board), wanted);
    return xml;
}

std::string GetProperty(const Given& given, const Classes& classes, const board::Board& board) {
    const Class& declaration = ClassOfInstance(given, classes);
    const std::string name = given.Text("PropertyName");
    const auto& all = declaration.properties;
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const Property& each) { return IsSameWord(each.name, name); });
    if (found == all.end()) {
        throw CimError(Code::NoSuchProperty, declaration.name + " has no property " + name);
    }
    std::string xml;
    AppendValues(xml, HealthValues(board)[static_cast<std::size_t>(found - all.begin())], found->isArray);
    return xml;
}

struct Operation {
    const char* name;
    std::string (*perform)(const Given&, const Classes&, const board::Board&);
    std::vector<const char*> parameters;
};

const std::vector<Operation>& Operations() {
    static const std::vector<Operation> operations{
        {"GetClass",
         GetClass,
         {"ClassName", "LocalOnly", "IncludeQualifiers", "IncludeClassOrigin", "PropertyList"}},
        {"EnumerateClasses",
         EnumerateClasses,
         {"ClassName", "DeepInheritance", "LocalOnly", "IncludeQualifiers", "IncludeClassOrigin"}},
        {"EnumerateClassNames", EnumerateClassNames, {"ClassName", "DeepInheritance"}},
        {"EnumerateInstances",
         EnumerateInstances,
         {"ClassName", "LocalOnly", "DeepInheritance", "IncludeQualifiers", "IncludeClassOrigin",
          "PropertyList"}},
        {"EnumerateInstanceNames", EnumerateInstanceNames, {"ClassName"}},
        {"GetInstance",
         GetInstance,
         {"InstanceName", "LocalOnly", "IncludeQualifiers", "IncludeClassOrigin", "PropertyList"}},
        {"GetProperty", GetProperty, {"InstanceName", "PropertyName"}}};
    return operations;
}

void RequireNamespace(const Call& call) {
    if (!IsSameWord(call.nameSpace, ObjectManager::kNamespace)) {
        throw CimError(Code::InvalidNamespace,
                       "there is no namespace " + call.nameSpace + "; it is " + ObjectManager::kNamespace);
    }
}

/// The argument of that name, if it was given with a value.
std::optional<MethodArgument> Passed(const Call& call, const Parameter& parameter) {
    for (const Argument& argument : call.arguments) {
        if (!IsSameWord(argument.name, parameter.name) || !argument.value) {
            continue;
        }
        const Element& value = *argument.value;
        const bool isOfType = argument.type.empty() || IsSameWord(argument.type, NameOf(parameter.type));
        if (value.name != "VALUE" || !value.children.empty() || !isOfType ||
            !IsValue(value.text, parameter.type)) {
            RefuseArgument(parameter.name, std::string("is no ") + NameOf(parameter.type));
        }
        return MethodArgument{parameter.name, value.text};
    }
    return std::nullopt;
}

}  // namespace

std::int64_t NumberOf(const MethodArgument& argument) {
    return CStringUtil::TStringToNumber(argument.value);
}

std::string Perform(const Call& call, const Classes& classes, const board::Board& board) {
    RequireNamespace(call);
    for (const Operation& operation : Operations()) {
        if (IsSameWord(call.name, operation.name)) {
            RequireKnown(call, operation.parameters);
            return operation.perform(Given(call), classes, board);
        }
    }
    throw CimError(Code::NotSupported, "the operation " + call.name + " is not served");
}

MethodCall ReadMethodCall(const Call& call, const Classes& classes) {
    RequireNamespace(call);
    const Class& declaration = ClassNamed(call.className, classes, Code::NotFound);
    const Method* const method = declaration.FindMethod(call.name);
    if (method == nullptr) {
        throw CimError(Code::MethodNotFound, declaration.name + " has no method " + call.name);
    }
    if (call.isOfInstance) {
        throw CimError(Code::NotFound, declaration.name + " has no instances; its methods are the class's");
    }
    std::vector<const char*> known{kAppKey};
    for (const Parameter& parameter : method->parameters) {
        if (parameter.isIn) {
            known.push_back(parameter.name.c_str());
        }
    }
    RequireKnown(call, known);
    MethodCall made{.className = declaration.name,
                    .method = method->name,
                    .arguments = {},
                    .messageId = call.messageId,
                    .calledAs = call.name};
    for (const Parameter& parameter : method->parameters) {
        if (auto argument = parameter.isIn ? Passed(call, parameter) : std::nullopt) {
            made.arguments.push_back(std::move(*argument));
        }
    }
    if (auto key = Passed(call, {.name = kAppKey})) {
        if (key->value.size() > board::kMostKey) {
            RefuseArgument(kAppKey, "is too long");
        }
        made.appKey = std::move(key->value);
    }
    return made;
}

CimError::Code CodeOf(std::uint32_t status) {
    static constexpr std::array<std::pair<std::uint32_t, Code>, 7> kCodes{
        {{0x80041002U, Code::NotFound},
         {0x80041003U, Code::AccessDenied},
         {0x80041005U, Code::TypeMismatch},
         {0x80041008U, Code::InvalidParameter},
         {0x8004100CU, Code::NotSupported},
         {0x80041010U, Code::InvalidClass},
         {0x8004102EU, Code::MethodNotFound}}};
    const auto* const found =
        std::find_if(kCodes.begin(), kCodes.end(), [&](const auto& each) { return each.first == status; });
    return found == kCodes.end() ? Code::Failed : found->second;
}

}  // namespace wbem
