// The keyed table on a hash index, and its registration.
#pragma once

#include "platform/automation/class_table.hpp"
#include "platform/scripting/dictionary.hpp"

namespace Scripting {

// A new, empty dictionary. Look-ups take constant time. Keys of the number types are equal when their values
// are; otherwise keys of different types differ. Objects are compared by identity; an array is no key (error
// 5).
DictionaryPtr MakeDictionary();

// Puts "Scripting.Dictionary" into the class table.
void RegisterDictionary(automation::ClassTable& classes);

}  // namespace Scripting
