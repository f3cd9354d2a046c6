#include "Shapes.h"

#include "Reading.h"
#include "convlib/EntryPoints.h"

#include <string>

namespace bench {
namespace {

constexpr std::uint32_t kItemsOfDrive = 16;
constexpr const char* kValue = "558 GB";

struct Texts {
    std::string parent;
    std::string name;
};

Texts TextsOf(Shape shape, std::uint32_t number) {
    const std::string own = "Capacity " + std::to_string(number);
    switch (shape) {
        case Shape::Chain:
            return {number == 0 ? "" : "Capacity " + std::to_string(number - 1), own};
        case Shape::OneName:
            return {"Capacity", "Capacity"};
        case Shape::NoParent:
            return {"Parent " + std::to_string(number), own};
        default:
            return {number == 0 ? "" : "Capacity 0", own};
    }
}

}  // namespace

ItemList ItemsOf(Shape shape, std::uint32_t drives) {
    if (shape == Shape::Report) {
        return Read(Kind::Drives, ReportOf(Kind::Drives, drives).path);
    }
    ItemList items;
    for (std::uint32_t number = 0; number < kItemsOfDrive * drives; ++number) {
        const Texts texts = TextsOf(shape, number);
        items.push_back(CreateItemDisp(texts.parent.c_str(), texts.name.c_str(), kValue, "TRUE"));
    }
    return items;
}

}  // namespace bench
