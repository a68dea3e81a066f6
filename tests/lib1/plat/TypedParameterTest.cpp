#include "plat/TypedParameter.h"

#include <climits>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/plat/ParameterListener.h"
#include "lib1/plat/RecordingLogger.h"
#include "plat/BinaryParameter.h"
#include "plat/BoolParameter.h"
#include "plat/Configuration.h"
#include "plat/IntParameter.h"
#include "plat/StringParameter.h"

namespace {

using plat::BinaryParameter;
using plat::BoolParameter;
using plat::Configuration;
using plat::IntParameter;
using plat::MBuf;
using plat::String;
using plat::StringParameter;
using plat::TypedParameter;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Bytes = MBuf<unsigned char>;
using Line = RecordingLogger::Line;

RecordingLogger recorder("recorder");

Bytes bytesOf(std::string_view text, bool isSecure = false) {
    Bytes bytes(isSecure);
    auto* const copy = new unsigned char[text.size()];
    std::copy(text.begin(), text.end(), copy);
    bytes.replaceBuf(copy, int(text.size()));
    return bytes;
}

template <typename T>
std::string textOf(const T& value) {
    const String text = String::owning(TypedParameter<T>::valueAsString(value));
    return text.get() == nullptr ? "(null)" : text.get();
}

struct TypedParameterTest : testing::Test {
    TypedParameterTest() { recorder.take(); }

    Configuration config{"Test", nullptr};
    const LogSetting setting{"ConfigParameter:recorder:100"};
};

TEST(TypedParameter, NamesItsTypes) {
    EXPECT_STREQ(TypedParameter<bool>::getTypeName(), "Bool");
    EXPECT_STREQ(TypedParameter<int>::getTypeName(), "Int");
    EXPECT_STREQ(TypedParameter<String>::getTypeName(), "String");
    EXPECT_STREQ(TypedParameter<Bytes>::getTypeName(), "Binary");
}

TEST(TypedParameter, WritesValuesAsText) {
    EXPECT_EQ(textOf(true), "1");
    EXPECT_EQ(textOf(false), "0");
    EXPECT_EQ(textOf(-12), "-12");
    EXPECT_EQ(textOf(INT_MIN), "-2147483648");
    EXPECT_EQ(textOf(INT_MAX), "2147483647");
    EXPECT_EQ(textOf(String("text")), "text");
    EXPECT_EQ(textOf(String("")), "");
    EXPECT_EQ(textOf(String()), "(null)");
    EXPECT_EQ(textOf(bytesOf(std::string_view("\x00\xAB\xff", 3))), "00abff");
    EXPECT_EQ(textOf(Bytes()), "");
}

TEST_F(TypedParameterTest, NewParameterHasItsDefaultAndLogsIt) {
    const IntParameter param("Name", "", 5, false, &config);
    EXPECT_EQ(param.getPriority(), 100);
    EXPECT_EQ(valueOf(param), "5");
    EXPECT_THAT(recorder.take(),
                ElementsAre(Line{100, "ConfigParameter", "set Name(Int) to 5, priority 100"}));
}

TEST_F(TypedParameterTest, LogsTheChangesOfEveryType) {
    BoolParameter flag("Flag", "", false, false, &config);
    StringParameter text("_Text", "", "clear", false, &config); // internal names are logged too
    BinaryParameter binary("Bin", "", {}, &config);
    flag.setValue(true, -7);
    binary.setValue(bytesOf("AB"), 50);
    text.setValue(String(), 0);
    EXPECT_THAT(
        recorder.takeTexts(),
        ElementsAre("set Flag(Bool) to 0, priority 100", "set _Text(String) to clear, priority 100",
                    "set Bin(Binary) to , priority 100", "set Flag(Bool) to 1, priority -7",
                    "set Bin(Binary) to 4142, priority 50", "set _Text(String) to , priority 0"));
}

TEST_F(TypedParameterTest, LowestPriorityIsInForce) {
    IntParameter param("P", "", 5, false, &config);
    ParameterListener listener(param);
    EXPECT_TRUE(param.setValue(6, 50));
    EXPECT_EQ(valueOf(param), "6");
    EXPECT_FALSE(param.isLocked());
    EXPECT_TRUE(param.setValue(7, 0));
    EXPECT_EQ(valueOf(param), "7");
    EXPECT_EQ(param.value(), 7);
    EXPECT_EQ(param.getPriority(), 0);
    EXPECT_TRUE(param.isLocked());
    EXPECT_THAT(valuesOf(param), ElementsAre(Pair(0, "7"), Pair(50, "6"), Pair(100, "5")));
    param.unsetParam(0, true);
    EXPECT_EQ(valueOf(param), "6");
    EXPECT_THAT(listener.take(), ElementsAre(Pair("P", 50), Pair("P", 0), Pair("P", 0)));
}

TEST_F(TypedParameterTest, ValueBehindTheOneInForceIsToldToo) {
    IntParameter param("P", "", 5, false, &config);
    param.setValue(6, 50);
    ParameterListener listener(param);
    param.setValue(7, 70);
    param.setValue(8, 100);
    EXPECT_THAT(listener.takePriorities(), ElementsAre(70, 100));
    EXPECT_EQ(valueOf(param), "6");
}

template <typename Param, typename T>
void expectSilenceForEqualValue(Param& param, const T& value, const T& equal) {
    param.setValue(value, 50);
    ParameterListener listener(param);
    recorder.take();
    EXPECT_TRUE(param.setValue(equal, 50));
    EXPECT_THAT(recorder.take(), IsEmpty());
    EXPECT_THAT(listener.take(), IsEmpty());
    param.setValue(equal, 51); // at another priority it is news
    EXPECT_EQ(recorder.take().size(), 1U);
    EXPECT_THAT(listener.takePriorities(), ElementsAre(51));
}

TEST_F(TypedParameterTest, EqualValueIsNeitherLoggedNorTold) {
    BoolParameter flag("P", "", false, false, &config);
    expectSilenceForEqualValue(flag, true, true);
    IntParameter number("P", "", 5, false, &config);
    expectSilenceForEqualValue(number, 6, 6);
    StringParameter text("P", "", "a", false, &config);
    expectSilenceForEqualValue(text, String("b"), String("b"));
    StringParameter nullText("P", "", "a", false, &config);
    expectSilenceForEqualValue(nullText, String(), String());
    BinaryParameter binary("P", "", {}, &config);
    expectSilenceForEqualValue(binary, bytesOf("AB"), bytesOf("AB"));
    BinaryParameter empty("P", "", {}, &config);
    expectSilenceForEqualValue(empty, Bytes(), Bytes());
}

TEST_F(TypedParameterTest, DifferentValuesAreTold) {
    StringParameter text("P", "", "", false, &config);
    BinaryParameter binary("P", "", {}, &config);
    ParameterListener listener;
    text.callbacks.push_back(&listener);
    binary.callbacks.push_back(&listener);
    text.setValue(String(), 100); // null is not the empty text
    text.setValue(String("a"), 100);
    text.setValue(String("A"), 100);
    binary.setValue(bytesOf("A"), 100);
    binary.setValue(bytesOf("B"), 100);
    binary.setValue(bytesOf("BB"), 100);
    EXPECT_EQ(listener.take().size(), 6U);
}

TEST_F(TypedParameterTest, StoresCopies) {
    Bytes bytes = bytesOf("AB");
    BinaryParameter binary("P", "", {}, &config);
    binary.setValue(bytes, 50);
    bytes.get()[0] = 'x';
    EXPECT_EQ(valueOf(binary), "4142");
}

TEST_F(TypedParameterTest, StoredValueCanBeSetAgainAtAnotherPriority) {
    StringParameter text("P", "", "default", false, &config);
    text.setValue(text.value(), 50);
    text.setValue(text.value(), 0);
    EXPECT_THAT(valuesOf(text),
                ElementsAre(Pair(0, "default"), Pair(50, "default"), Pair(100, "default")));
}

TEST_F(TypedParameterTest, DefaultIsNeverRemoved) {
    IntParameter param("P", "", 5, false, &config);
    ParameterListener listener(param);
    param.unsetParam(100, true);
    EXPECT_EQ(valueOf(param), "5");
    EXPECT_THAT(listener.take(), IsEmpty());
}

TEST_F(TypedParameterTest, RemovingWhatIsNotThereTellsNobody) {
    IntParameter param("P", "", 5, false, &config);
    ParameterListener listener(param);
    param.unsetParam(50, true);
    param.unsetParam(INT_MIN, true);
    EXPECT_THAT(listener.take(), IsEmpty());
}

TEST_F(TypedParameterTest, RemovesInSilenceIfToldSo) {
    IntParameter param("P", "", 5, false, &config);
    param.setValue(6, 50);
    ParameterListener listener(param);
    recorder.take();
    param.unsetParam(50, false);
    EXPECT_THAT(listener.take(), IsEmpty());
    EXPECT_THAT(recorder.take(), IsEmpty());
    EXPECT_EQ(param.getPriority(), 100);
}

TEST_F(TypedParameterTest, ListenersAreToldInOrder) {
    IntParameter param("P", "", 5, false, &config);
    std::vector<int> order;
    ParameterListener first(param);
    ParameterListener second(param);
    first.onChange = [&order] { order.push_back(1); };
    second.onChange = [&order] { order.push_back(2); };
    param.setValue(6, 50);
    param.unsetParam(50, true);
    EXPECT_THAT(order, ElementsAre(1, 2, 1, 2));
}

TEST_F(TypedParameterTest, ValueIsLoggedAndStoredBeforeListenersHearOfIt) {
    IntParameter param("P", "", 5, false, &config);
    ParameterListener listener(param);
    recorder.take();
    int seen = 0;
    std::size_t logged = 0;
    listener.onChange = [&] {
        seen = param.value();
        logged = recorder.take().size();
    };
    param.setValue(6, 50);
    EXPECT_EQ(seen, 6);
    EXPECT_EQ(logged, 1U);
}

TEST_F(TypedParameterTest, ExceptionOfAListenerLeavesTheChangeAndEndsTheTelling) {
    IntParameter param("P", "", 5, false, &config);
    ParameterListener first(param);
    ParameterListener second(param);
    first.onChange = [] { throw 7; };
    EXPECT_THROW(param.setValue(6, 50), int);
    EXPECT_EQ(valueOf(param), "6");
    EXPECT_THROW(param.unsetParam(50, true), int);
    EXPECT_EQ(valueOf(param), "5");
    EXPECT_THAT(second.take(), IsEmpty());
}

TEST_F(TypedParameterTest, ListenerMayAppendAnother) {
    IntParameter param("P", "", 5, false, &config);
    ParameterListener first(param);
    ParameterListener second;
    first.onChange = [&] {
        if (param.callbacks.size() == 1)
            param.callbacks.push_back(&second);
    };
    param.setValue(6, 50);
    param.setValue(7, 50);
    EXPECT_THAT(second.takePriorities(), ElementsAre(50, 50));
}

TEST_F(TypedParameterTest, ListenerMaySetTheParameterAgain) {
    IntParameter param("P", "", 5, false, &config);
    ParameterListener listener(param);
    listener.onChange = [&param] { param.setValue(0, 50); };
    param.setValue(6, 50);
    EXPECT_EQ(param.value(), 0);
    EXPECT_THAT(listener.takePriorities(), ElementsAre(50, 50));
}

TEST_F(TypedParameterTest, CloneHasAllValuesAndItsOwnCopies) {
    BinaryParameter binary("P", "", {}, &config);
    binary.setValue(bytesOf("AB", true), 50);
    Configuration other("Other", nullptr);
    recorder.take();
    const std::unique_ptr<plat::ConfigParameter> copy(binary.clone(&other));
    EXPECT_THAT(recorder.take(), IsEmpty()); // nothing was set
    binary.setValue(bytesOf("CD"), 50);
    EXPECT_THAT(valuesOf(*copy), ElementsAre(Pair(50, "4142"), Pair(100, "")));
    EXPECT_TRUE(dynamic_cast<BinaryParameter&>(*copy).value().isSecure());
}

TEST_F(TypedParameterTest, LogsNothingWhenDisabled) {
    plat::LogWriter::applyLogSetting("ConfigParameter:recorder:99");
    const IntParameter param("P", "", 5, false, &config);
    EXPECT_THAT(recorder.take(), IsEmpty());
}

} // namespace
