#include "Expansion.h"

namespace redfish {
namespace {

constexpr std::size_t kMostBytes = 8U << 20U;

class Expander final {
  public:
    Expander(const Expansion& expansion, const Finder& find) : m_Expansion(expansion), m_Find(find) {}

    /// As deep as a resource's objects and the levels together, which are few.
    // NOLINTNEXTLINE(misc-no-recursion)
    [[nodiscard]] bool Walk(Value& value, unsigned levels, bool isInLinks) {
        if (levels == 0) {
            return true;
        }
        if (value.is_array()) {
            for (Value& each : value) {
                if (!Step(each, levels, isInLinks)) {
                    return false;
                }
            }
        } else if (value.is_object()) {
            for (const auto& [name, part] : value.items()) {
                // A reference to where something began is a link like those, wherever it stands.
                if (!Step(part, levels, isInLinks || name == "Links" || name == "OriginOfCondition")) {
                    return false;
                }
            }
        }
        return true;
    }

  private:
    [[nodiscard]] bool Step(Value& value, unsigned levels, bool isInLinks) {
        const bool isLink = value.is_object() && value.size() == 1 && value.contains("@odata.id");
        if (!isLink) {
            return Walk(value, levels, isInLinks);
        }
        if (!(isInLinks ? m_Expansion.isInLinks : m_Expansion.isOutside)) {
            return true;
        }
        std::optional<Found> found = m_Find(value["@odata.id"].get_ref<const std::string&>());
        if (!found) {
            return true;
        }
        m_Size += found->size;
        if (m_Size > kMostBytes) {
            return false;
        }
        value = std::move(found->value);
        return Walk(value, levels - 1, false);
    }

    const Expansion& m_Expansion;
    const Finder& m_Find;
    std::size_t m_Size = 0;
};

}  // namespace

bool Expand(Value& value, const Expansion& expansion, const Finder& find) {
    return Expander(expansion, find).Walk(value, expansion.levels, false);
}

}  // namespace redfish
