#pragma once

namespace host::Platform {

// How many columns of a terminal a character takes, by the tables for UTF-8 whatever the user's locale is;
// negative for one that a terminal does not show.
int ColumnsOf(char32_t character);

}  // namespace host::Platform
