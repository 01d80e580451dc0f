#pragma once

#include <gtest/gtest.h>

#include <string>

#include "MapiStoreControl.h"
#include "TraceCapture.h"

/// A test over the file-backed mail library: registered as the mail client, buffers guarded by
/// inaccessible pages, calls of the wrong thread refused. After each test its ledger has to be empty
/// and free of misuse.
class MailStoreTest : public testing::Test
{
protected:
    /// `document` is what the store holds when a test begins.
    explicit MailStoreTest(std::string document) : m_document(std::move(document)) {}

    void SetUp() override;
    void TearDown() override;

    /// Sets a value of the mail library for this process; it counts from the next session.
    static void Configure(const wchar_t* name, const wchar_t* value);
    /// Replaces the document of the store, as another program would.
    static void WriteDocument(const std::string& text);
    /// The first document with `from` replaced by `to`, which must be there.
    std::string DocumentWith(const std::string& from, const std::string& to) const;
    /// Sets the fault plan of the next session.
    static void SetFaults(const std::string& plan);
    /// Sets the fault plan of the session that is under way; calls are counted from here on.
    static void SetFaultsAtOnce(const std::string& plan);
    /// What the ledger says of the last session.
    static MapiStoreCounts Counts();
    static std::string Report();
    /// Reads a changed document at once, and returns when the tables know of it.
    static void Refresh();
    /// Frees what the library keeps of released objects.
    static void DropShells();
    /// Expects that everything was given back and nothing was misused.
    static void ExpectCleanLedger();

    CTraceCapture trace;

private:
    std::string m_document;
};
