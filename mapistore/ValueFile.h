#pragma once

#include "Value.h"

namespace mapistore
{

/// A value that lies in a file below the store folder. The file is never changed once it is named,
/// so its size is taken when the document is read and its content when it is asked for.
class CValueFile final : public IValueFile
{
public:
    /// Null when there is no such file. `path` has "/" as its separator.
    static std::shared_ptr<const CValueFile> Find(const std::wstring& folder,
                                                  const std::wstring& path);

    std::uint64_t Size() const override { return m_cb; }
    std::string Read() const override;

private:
    CValueFile(std::wstring path, std::uint64_t cb) : m_path(std::move(path)), m_cb(cb) {}

    std::wstring m_path;
    std::uint64_t m_cb;
};

/// The whole of a file; false with the Win32 error as `error` when it cannot be read.
bool ReadWholeFile(const std::wstring& path, std::string& content, DWORD& error);

} // namespace mapistore
