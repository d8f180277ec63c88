// SPDX-License-Identifier: MIT
#pragma once

class TestDatabase;

/// Fills the database with the profile sample as a workstation at a version would have it: with all that
/// the versions up to it brought, and nothing of what version 10 brings to databases of every version.
/// \param version 0 (no version stored) to 9
void makeProfileAt(const TestDatabase &database, int version);
