/// The messages of an object that a test creates for one case.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "base/givenstream.h"
#include "base/inoncopyable.h"

/// Collects messages. Set it as message stream before SelectSubtest, as a runner does.
class GivenMessages : public LbGivenStream, public INonCopyable
{
public:
    /// `directory` is the data directory of the unit test that writes the messages.
    explicit GivenMessages(std::wstring directory) { SetDataDirectory(std::move(directory)); }

    void Write(std::wstring_view text) override { m_text.append(text); }

    const std::wstring& GetText() const noexcept { return m_text; }

private:
    std::wstring m_text;
};
