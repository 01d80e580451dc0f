#include "SaveFixture.h"

using namespace mapitest;

namespace
{

/// Streams over the properties of a message that may be written.
class StreamTest : public SaveTest
{
protected:
    void SetUp() override
    {
        SaveTest::SetUp();
        message = OpenMessage(100);
    }
    void TearDown() override
    {
        message.Reset();
        SaveTest::TearDown();
    }
    /// A stream with these bytes in it, its cursor behind them.
    CRef<IStream> StreamOf(const std::string& bytes, ULONG tag = 0x66010102)
    {
        CRef<IStream> stream;
        EXPECT_EQ(message->OpenProperty(
                      tag, &IID_IStream, 0, MAPI_CREATE | MAPI_MODIFY, stream.PutAs<IUnknown>()),
                  S_OK);
        ULONG cb = 0;
        EXPECT_EQ(stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &cb), S_OK);
        EXPECT_EQ(cb, bytes.size());
        return stream;
    }
    static HRESULT Seek(const CRef<IStream>& stream,
                        LONGLONG move,
                        DWORD origin,
                        ULONGLONG* position = nullptr)
    {
        LARGE_INTEGER offset{};
        offset.QuadPart = move;
        ULARGE_INTEGER to{};
        const HRESULT hr = stream->Seek(offset, origin, &to);
        if (position != nullptr)
        {
            *position = to.QuadPart;
        }
        return hr;
    }
    static std::string Rest(const CRef<IStream>& stream)
    {
        char bytes[256];
        ULONG cb = 0;
        EXPECT_EQ(stream->Read(bytes, sizeof(bytes), &cb), S_OK);
        return std::string(bytes, cb);
    }
    static ULARGE_INTEGER Size(ULONGLONG size)
    {
        ULARGE_INTEGER value{};
        value.QuadPart = size;
        return value;
    }

    MessageRef message;
};

TEST_F(StreamTest, CursorMovesFromEachOriginAndNeverBeforeTheBeginning)
{
    const CRef<IStream> stream = StreamOf("0123456789");
    ULONGLONG position = 0;
    EXPECT_EQ(Seek(stream, 3, STREAM_SEEK_SET, &position), S_OK);
    EXPECT_EQ(position, 3U);
    EXPECT_EQ(Seek(stream, 2, STREAM_SEEK_CUR, &position), S_OK);
    EXPECT_EQ(position, 5U);
    EXPECT_EQ(Rest(stream), "56789");
    EXPECT_EQ(Seek(stream, -4, STREAM_SEEK_END, &position), S_OK);
    EXPECT_EQ(position, 6U);
    EXPECT_EQ(Seek(stream, -7, STREAM_SEEK_CUR), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(Seek(stream, 0, 3), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(Seek(stream, INT64_MAX, STREAM_SEEK_CUR), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(Rest(stream), "6789"); // a refused move is none
    EXPECT_EQ(Seek(stream, 100, STREAM_SEEK_SET), S_OK);
    EXPECT_EQ(Rest(stream), "");
    ULONG cb = 7;
    EXPECT_EQ(stream->Read(nullptr, 1, &cb), STG_E_INVALIDPOINTER);
    EXPECT_EQ(cb, 0U);
}

TEST_F(StreamTest, WritingBehindTheEndFillsTheGapWithZeros)
{
    const CRef<IStream> stream = StreamOf("ab");
    EXPECT_EQ(Seek(stream, 4, STREAM_SEEK_SET), S_OK);
    ULONG cb = 0;
    EXPECT_EQ(stream->Write("e", 1, &cb), S_OK);
    EXPECT_EQ(Seek(stream, 0, STREAM_SEEK_SET), S_OK);
    EXPECT_EQ(Rest(stream), std::string("ab\0\0e", 5));
    EXPECT_EQ(stream->Write(nullptr, 1, &cb), STG_E_INVALIDPOINTER);
    EXPECT_EQ(Seek(stream, 0x7FFFFFFF, STREAM_SEEK_SET), S_OK);
    EXPECT_EQ(stream->Write("x", 1, &cb), STG_E_MEDIUMFULL);
}

TEST_F(StreamTest, SizeCanBeSetWithinTheLimit)
{
    const CRef<IStream> stream = StreamOf("0123456789");
    EXPECT_EQ(stream->SetSize(Size(4)), S_OK);
    STATSTG stat{};
    EXPECT_EQ(stream->Stat(&stat, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(stat.cbSize.QuadPart, 4U);
    EXPECT_EQ(stat.type, static_cast<DWORD>(STGTY_STREAM));
    EXPECT_EQ(stat.grfMode, static_cast<DWORD>(STGM_READWRITE));
    EXPECT_EQ(stream->SetSize(Size(0x80000000ULL)), STG_E_MEDIUMFULL);
    EXPECT_EQ(stream->Stat(nullptr, 0), STG_E_INVALIDPOINTER);
    EXPECT_EQ(stream->Stat(&stat, 5), STG_E_INVALIDFLAG);
}

TEST_F(StreamTest, RevertGoesBackToTheLastCommit)
{
    const CRef<IStream> stream = StreamOf("kept");
    EXPECT_EQ(stream->Commit(0), S_OK);
    ULONG cb = 0;
    EXPECT_EQ(stream->Write(" lost", 5, &cb), S_OK);
    EXPECT_EQ(stream->Revert(), S_OK);
    EXPECT_EQ(Seek(stream, 0, STREAM_SEEK_SET), S_OK);
    EXPECT_EQ(Rest(stream), "kept");
}

TEST_F(StreamTest, CloneReadsFromTheSamePlaceAndCannotWrite)
{
    const CRef<IStream> stream = StreamOf("0123456789");
    EXPECT_EQ(Seek(stream, 7, STREAM_SEEK_SET), S_OK);
    CRef<IStream> clone;
    ASSERT_EQ(stream->Clone(clone.Put()), S_OK);
    EXPECT_EQ(Rest(clone), "789");
    EXPECT_EQ(Rest(stream), "789"); // each has a cursor of its own
    ULONG cb = 0;
    EXPECT_EQ(clone->Write("x", 1, &cb), STG_E_ACCESSDENIED);
    EXPECT_EQ(clone->SetSize(Size(0)), STG_E_ACCESSDENIED);
    EXPECT_EQ(clone->Revert(), S_OK);
    STATSTG stat{};
    EXPECT_EQ(clone->Stat(&stat, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(stat.grfMode, static_cast<DWORD>(STGM_READ));
    EXPECT_EQ(stream->Clone(nullptr), STG_E_INVALIDPOINTER);
}

TEST_F(StreamTest, CopyingMovesBothCursorsAndMayGoToTheStreamItself)
{
    const CRef<IStream> from = StreamOf("0123456789");
    const CRef<IStream> to = StreamOf("to:", 0x66020102);
    EXPECT_EQ(Seek(from, 4, STREAM_SEEK_SET), S_OK);
    ULARGE_INTEGER read{};
    ULARGE_INTEGER written{};
    EXPECT_EQ(from->CopyTo(to.Get(), Size(3), &read, &written), S_OK);
    EXPECT_EQ(read.QuadPart, 3U);
    EXPECT_EQ(written.QuadPart, 3U);
    EXPECT_EQ(Rest(from), "789");
    EXPECT_EQ(Seek(to, 0, STREAM_SEEK_SET), S_OK);
    EXPECT_EQ(Rest(to), "to:456");
    EXPECT_EQ(Seek(from, 1000, STREAM_SEEK_SET), S_OK);
    EXPECT_EQ(from->CopyTo(to.Get(), Size(3), &read, &written), S_OK);
    EXPECT_EQ(read.QuadPart, 0U);
    EXPECT_EQ(from->CopyTo(nullptr, Size(3), &read, &written), STG_E_INVALIDPOINTER);

    EXPECT_EQ(Seek(from, 0, STREAM_SEEK_SET), S_OK);
    EXPECT_EQ(from->CopyTo(from.Get(), Size(10), &read, &written), S_OK);
    EXPECT_EQ(read.QuadPart, 10U);
    EXPECT_EQ(written.QuadPart, 10U);
}

TEST_F(StreamTest, RegionsCannotBeLocked)
{
    const CRef<IStream> stream = StreamOf("x");
    EXPECT_EQ(stream->LockRegion(Size(0), Size(1), LOCK_WRITE), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(stream->UnlockRegion(Size(0), Size(1), LOCK_WRITE), STG_E_INVALIDFUNCTION);
}

TEST_F(StreamTest, WrittenStreamReachesItsPropertyWithTheLastRelease)
{
    {
        const CRef<IStream> stream = StreamOf("\x01\x02");
    }
    const CHeld<SPropValue> value = GetProp(message.Get(), 0x66010102);
    ASSERT_EQ(value->ulPropTag, 0x66010102U);
    EXPECT_EQ(value->Value.bin.cb, 2U);
}

} // namespace
