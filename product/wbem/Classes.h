#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class IWbemObjectManager;

namespace wbem {

enum class Type { Boolean, Sint32, Uint32, String, DateTime };

/// "uint32".
[[nodiscard]] const char* NameOf(Type type);

/// Whether a text is a value of that type: "252" of uint32, "TRUE" of boolean.
[[nodiscard]] bool IsValue(std::string_view text, Type type);

struct Property {
    std::string name;
    Type type = Type::String;
    bool isArray = false;
    bool isKey = false;
};

struct Parameter {
    std::string name;
    Type type = Type::String;
    bool isIn = false, isOut = false;
};

/// Belongs to the class, and not to an instance; gives a uint32.
struct Method {
    std::string name;
    std::vector<Parameter> parameters;  ///< as declared, those that go in first
};

struct Class {
    std::string name;
    std::vector<Property> properties;
    std::vector<Method> methods;

    [[nodiscard]] const Method* FindMethod(std::string_view called) const;
};

inline constexpr const char* kRaidClass = "ZORBALT_MngSrvRaid";
inline constexpr const char* kHealthClass = "ZORBALT_MngSrvRaidHealth";

/// The classes of the namespace. Names are found in upper or lower case, as CIM has it.
///
/// A repository gives out no list of a class's methods and no types: which methods ZORBALT_MngSrvRaid has is
/// known here, and a type is the one that an instance of the method's signature takes.
class Classes final {
  public:
    /// Throws std::runtime_error where the repository does not have the class, or has types of which nothing
    /// is known here.
    explicit Classes(IWbemObjectManager& repository);

    [[nodiscard]] const std::vector<Class>& All() const { return m_All; }
    [[nodiscard]] const Class* Find(std::string_view called) const;

  private:
    std::vector<Class> m_All;
};

}  // namespace wbem
