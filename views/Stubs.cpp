#include "views/Views.h"
namespace views { std::string Html(const inventory::Snapshot&){return "h\n";} }
