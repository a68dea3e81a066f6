#include "loc/TextCache.h"

#include <climits>
#include <string>

#include <gtest/gtest.h>

namespace {

using loc::TextCache;

const char id[] = "own_id";
const char text[] = "text";

const loc::TransMap* mapAt(const void* place) {
    return static_cast<const loc::TransMap*>(place);
}

TextCache::Key keyOf(const char* msgid) {
    return {msgid, mapAt(&text), TextCache::generation()};
}

TEST(TextCache, IsEmptyAtFirst) {
    const TextCache cache;
    EXPECT_EQ(cache.find(keyOf(id)), nullptr);
    EXPECT_EQ(cache.find(keyOf(nullptr)), nullptr);
}

TEST(TextCache, FindsWhatWasAdded) {
    TextCache cache;
    EXPECT_EQ(cache.add(keyOf(id), text), text);
    EXPECT_EQ(cache.find(keyOf(id)), text);
}

TEST(TextCache, EveryPartOfTheKeyCounts) {
    TextCache cache;
    const TextCache::Key key = keyOf(id);
    cache.add(key, text);
    TextCache::Key other = key;
    other.id = id + 1;
    EXPECT_EQ(cache.find(other), nullptr);
    other = key;
    other.map = mapAt(&id);
    EXPECT_EQ(cache.find(other), nullptr);
    other = key;
    other.kind = TextCache::Raw;
    EXPECT_EQ(cache.find(other), nullptr);
    other = key;
    other.min = 1;
    EXPECT_EQ(cache.find(other), nullptr);
    other = key;
    other.max = 1;
    EXPECT_EQ(cache.find(other), nullptr);
}

TEST(TextCache, IdThatOtherBytesTookThePlaceOfIsNotFound) {
    TextCache cache;
    char place[] = "own_id";
    cache.add(keyOf(place), text);
    EXPECT_EQ(cache.find(keyOf(place)), text);
    place[5] = 'D';
    EXPECT_EQ(cache.find(keyOf(place)), nullptr);
    place[5] = '\0';
    EXPECT_EQ(cache.find(keyOf(place)), nullptr);
}

TEST(TextCache, KeepsIdsOfUpTo47Bytes) {
    TextCache cache;
    const std::string longest(47, 'x');
    EXPECT_EQ(cache.add(keyOf(longest.c_str()), text), text);
    EXPECT_EQ(cache.find(keyOf(longest.c_str())), text);
    const std::string longer(48, 'x');
    EXPECT_EQ(cache.add(keyOf(longer.c_str()), text), text);
    EXPECT_EQ(cache.find(keyOf(longer.c_str())), nullptr);
}

TEST(TextCache, DoesNotKeepANullId) {
    TextCache cache;
    EXPECT_EQ(cache.add(keyOf(nullptr), text), text);
    EXPECT_EQ(cache.find(keyOf(nullptr)), nullptr);
}

TEST(TextCache, NothingCountsAfterAChange) {
    TextCache cache;
    cache.add(keyOf(id), text);
    TextCache::renew();
    EXPECT_EQ(cache.find(keyOf(id)), nullptr);
}

TEST(TextCache, KeepsTheLatestOfTheIdsThatShareAPlace) {
    TextCache cache;
    static const char ids[1000] = {};
    for (const char& place : ids)
        cache.add(keyOf(&place), &place);
    for (const char& place : ids) {
        const char* const found = cache.find(keyOf(&place));
        EXPECT_TRUE(found == nullptr || found == &place);
    }
    EXPECT_EQ(cache.find(keyOf(&ids[999])), &ids[999]);
}

TEST(TextCache, PluralsTellZeroOneAndOthersApart) {
    EXPECT_EQ(TextCache::pluralKind(0), TextCache::PluralOfZero);
    EXPECT_EQ(TextCache::pluralKind(1), TextCache::PluralOfOne);
    for (const int count : {INT_MIN, -1, 2, INT_MAX})
        EXPECT_EQ(TextCache::pluralKind(count), TextCache::PluralOfOthers);
}

} // namespace
