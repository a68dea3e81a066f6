#include "plat/x86/Cpu.h"

#include <gtest/gtest.h>

namespace {

TEST(CpuFeatures, AreThoseThatTheCompilersLibraryFinds) {
    const plat::CpuFeatures features = plat::cpuFeatures();
    EXPECT_EQ(features.avx2, __builtin_cpu_supports("avx2") != 0);
    EXPECT_EQ(features.bmi2, __builtin_cpu_supports("bmi2") != 0);
}

TEST(CpuFeatures, StayTheSame) {
    const plat::CpuFeatures first = plat::cpuFeatures();
    const plat::CpuFeatures second = plat::cpuFeatures();
    EXPECT_EQ(first.avx2, second.avx2);
    EXPECT_EQ(first.bmi2, second.bmi2);
}

} // namespace
