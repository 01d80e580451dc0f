#include <gtest/gtest.h>

// The Windows builds link with -municode, which makes wmain the entry: one home for both forms.
#ifdef _WIN32
int wmain(int argc, wchar_t** argv)
#else
int main(int argc, char** argv)
#endif
{
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
