#include "FaultGuard.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <stdexcept>

#include "DebuggerText.h"

namespace
{

void SetFlag(void* context)
{
    *static_cast<bool*>(context) = true;
}

/// An address that nobody may touch. Null would do on Windows, but some Wine set-ups map the page there.
volatile int* ForbiddenAddress()
{
    static volatile int* const s_page =
        static_cast<int*>(VirtualAlloc(nullptr, 4096, MEM_RESERVE, PAGE_NOACCESS));
    return s_page;
}

void WriteForbidden(void* context)
{
    *static_cast<bool*>(context) = true;
    *ForbiddenAddress() = 1;
}

void DivideByZero(void* context)
{
    volatile int* const divisor = static_cast<volatile int*>(context);
    *divisor = 100 / *divisor;
}

void RaiseCode(void* context)
{
    RaiseException(*static_cast<DWORD*>(context), 0, 0, nullptr);
}

void ThrowCpp(void* /*context*/)
{
    throw std::runtime_error("through");
}

/// Goes deeper than any stack reaches.
int Recurse(int depth)
{
    volatile char room[4096];
    room[0] = static_cast<char>(depth);
    return depth > 0 ? Recurse(depth - 1) + room[0] : 0;
}

void OverflowStack(void* context)
{
    *static_cast<int*>(context) = Recurse(*static_cast<int*>(context));
}

void GuardInside(void* context)
{
    *static_cast<DWORD*>(context) = RunGuarded(WriteForbidden, context);
}

void PrintToDebugger(void* /*context*/)
{
    OutputDebugStringA("fine");
}

} // namespace

TEST(FaultGuard, WorkWithoutAFaultAnswersZero)
{
    bool done = false;

    EXPECT_EQ(RunGuarded(SetFlag, &done), 0U);
    EXPECT_TRUE(done);
}

TEST(FaultGuard, AccessViolationIsSurvivedAndNamed)
{
    bool reached = false;

    EXPECT_EQ(RunGuarded(WriteForbidden, &reached), 0xC0000005U);
    EXPECT_TRUE(reached);
}

TEST(FaultGuard, DivisionByZeroIsSurvivedAndNamed)
{
    int divisor = 0;

    EXPECT_EQ(RunGuarded(DivideByZero, &divisor), 0xC0000094U);
}

TEST(FaultGuard, ExceptionsOfOtherCompilersAreSurvived)
{
    DWORD code = 0xE06D7363;

    EXPECT_EQ(RunGuarded(RaiseCode, &code), 0xE06D7363U);
}

TEST(FaultGuard, FaultsCanBeSurvivedAgainAndAgain)
{
    for (int i = 0; i < 1000; i++)
    {
        bool reached = false;
        ASSERT_EQ(RunGuarded(WriteForbidden, &reached), 0xC0000005U);
    }
}

TEST(FaultGuard, StackOverflowIsSurvivedMoreThanOnce)
{
    int depth = 100000000;
    EXPECT_EQ(RunGuarded(OverflowStack, &depth), 0xC00000FDU);
    EXPECT_EQ(RunGuarded(OverflowStack, &depth), 0xC00000FDU);
}

TEST(FaultGuard, CodeOfAnEarlierFaultDoesNotStick)
{
    bool flag = false;
    RunGuarded(WriteForbidden, &flag);

    EXPECT_EQ(RunGuarded(SetFlag, &flag), 0U);
}

TEST(FaultGuard, InnerGuardAnswersAndTheOuterWorkGoesOn)
{
    DWORD inner = 0;

    EXPECT_EQ(RunGuarded(GuardInside, &inner), 0U);
    EXPECT_EQ(inner, 0xC0000005U);
}

TEST(FaultGuard, OurOwnExceptionsPassThrough)
{
    EXPECT_THROW(RunGuarded(ThrowCpp, nullptr), std::runtime_error);
}

TEST(FaultGuard, WhatTheWorkHandlesItselfIsNoFault)
{
    const CDebuggerText debugger;

    EXPECT_EQ(RunGuarded(PrintToDebugger, nullptr), 0U);
    EXPECT_EQ(debugger.Texts(), (std::vector<std::string>{"fine"}));
}
