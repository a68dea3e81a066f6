#pragma once

/// Registers the texts of the "plat_" ids, once however many objects are made. Each source file
/// that uses such ids makes one at file level, so that the table is linked in and there before
/// main.
class AddLocStrings_plat { // NOLINT(readability-identifier-naming): its established name
public:
    AddLocStrings_plat();
};
