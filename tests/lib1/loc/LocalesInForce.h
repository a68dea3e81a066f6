#pragma once

#include <initializer_list>
#include <vector>

#include "loc/Localize.h"
#include "loc/TransMap.h"

/// Makes the calling thread see the texts of some locales, for the length of a scope.
class LocalesInForce {
public:
    LocalesInForce(std::initializer_list<const char*> locales) {
        loc::Localize::inst().setTransMapLocales(strings(locales), &map);
    }

    loc::TransMap map;

    static std::vector<plat::String> strings(std::initializer_list<const char*> texts) {
        std::vector<plat::String> copies;
        for (const char* text : texts)
            copies.emplace_back(text);
        return copies;
    }
};
