#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "ChildProcess.h"
#include "RegistryListing.h"

/// The places where a registration may write: the classes of the machine and of the user, in the views
/// of 64-bit and of 32-bit programs. Key names have no case, and stand in lower case.
struct ClassesListing
{
    ClassesListing();

    RegistryListing machine;
    RegistryListing machine32;
    RegistryListing user;
    RegistryListing user32;
};

/// What two listings do not share, with "+" before what came and "-" before what went; empty when they
/// are the same.
std::wstring Difference(const ClassesListing& before, const ClassesListing& after);

/// A listing as lines, for comparison.
std::wstring Text(const RegistryListing& listing);

/// Everything that a registration of the product writes, below the classes root.
RegistryListing Registered();

/// The part of a registration that 32-bit clients see in a view of their own.
RegistryListing InterfacesOf(const RegistryListing& listing);

/// The machine's registration: all of it, and the interfaces in the view of 32-bit clients as well.
RegistryListing RegisteredForMachine();

/// Wine 8 registers a user's type library in the machine's 32-bit view as well, past the user's view of
/// the registry. Can go when the tests of the user's verbs pass without it.
RegistryListing WithoutThirtyTwoBit(const RegistryListing& listing);

/// Runs the product to its end and gives its exit code.
DWORD RunServer(const std::wstring& arguments);

/// Starts and ends without a registration of either kind, and with the containers in which every
/// class registers: they are the system's, and stay.
class RegistrationTest : public testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;
};
