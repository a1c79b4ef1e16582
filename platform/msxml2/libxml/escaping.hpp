// Texts as they stand in markup.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace MSXML2::libxml {

enum class Place { Content, Attribute };

// Appends `text` with the characters replaced that mean something else in markup or would not be read back
// as they are: a plain carriage return comes back as a line feed, and so do tabs and line feeds of an
// attribute as blanks.
void AppendEscaped(std::string& out, std::string_view text, Place place);

// The opposite, for what AppendEscaped has written.
void AppendUnescaped(std::string& out, std::string_view markup);

}  // namespace MSXML2::libxml
