#pragma once

#include "Element.h"

#include <functional>
#include <string>

namespace views::html {

/// A page that needs nothing from elsewhere, with what `fill` puts into its body, and with the script of that
/// path, if any.
[[nodiscard]] std::string PageOf(const std::string& title, const std::function<void(Element body)>& fill,
                                 const std::string& script = "");

}  // namespace views::html
