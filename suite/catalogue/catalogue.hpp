// The product catalogue's components, on the catalogue database.
#pragma once

#include "platform/automation/class_table.hpp"

namespace Catalogue {

// Registers the categories of products, the products and the categories of questions. A null name or
// description is an empty text; failures of the database are raised.
void RegisterCatalogue(automation::ClassTable& classes);

}  // namespace Catalogue
