// SPDX-License-Identifier: MIT
#pragma once

/// Lets a request of SQLite for memory fail, in this process. A test that uses it is linked to SQLite and compiles
/// the file itself.
namespace failingmemory {

/// Takes the place of SQLite's allocator. Nothing may have used SQLite before.
/// \return whether SQLite took it
bool install();

/// \param fulfilled how many requests are fulfilled from now on before one is not
void failAfter(int fulfilled);

/// Fulfils all requests from now on.
/// \return whether one was refused since failAfter()
bool stop();

} // namespace failingmemory
