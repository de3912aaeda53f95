// Where the writer's text goes: one sink for each kind of target.
//
// The writer hands its output to a sink as a sequence of UTF-16 pieces. Targets belong to the
// caller and must outlive the sink.
#pragma once

#include "corda/i18n/codecvt_ustring_to_string.hpp"

#include <cstddef>
#include <iosfwd>
#include <string>

namespace tarn::utils {

/// The abstract output of the writer. All of it is inline, so that a class outside the library can
/// derive from it.
class Sink
{
public:
    Sink() = default;
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;
    virtual ~Sink() = default;

    /// Takes one piece of text and returns this sink, so that calls chain.
    virtual Sink& write(const std::u16string& text) = 0;

    /// The name of the encoding in which the target receives text; empty if the target holds
    /// UTF-16.
    virtual std::u16string encodingName() const = 0;

    /// Pushes everything written so far through to the target.
    virtual void flush() = 0;
};

namespace detail {

/// Where text may be appended in place of calls of a sink's `write`.
struct AppendWindow
{
    /// The string that the sink appends each piece to; null if the sink does more with a piece.
    std::u16string* text = nullptr;
    /// In code units: the size up to which the sink only appends.
    std::size_t limit = 0;
    /// Whether `text` is the target, which the caller sees after each operation.
    bool isTarget = false;
};

AppendWindow appendWindowOf(Sink& sink);

} // namespace detail

/// Appends every piece to a UTF-16 string at once.
class UStringSink final : public Sink
{
public:
    /// Empties @p target.
    explicit UStringSink(std::u16string& target);

    Sink& write(const std::u16string& text) override;
    std::u16string encodingName() const override;
    void flush() override;

private:
    friend detail::AppendWindow detail::appendWindowOf(Sink& sink);

    std::u16string& target;
};

/// Collects pieces and converts them to UTF-8 in batches.
///
/// A batch ends at the end of a piece. If the piece ends in a high surrogate, that code unit waits
/// for the next batch, so that a surrogate pair in two pieces is converted as one. If a conversion
/// or `writeConverted` throws, the text stays in the buffer, and the next `write` or `flush`
/// converts all of it.
class ConvertingSink : public Sink
{
public:
    /// In UTF-16 code units: what the buffer holds without growing, and the size that it must
    /// exceed before `write` converts it.
    static constexpr std::size_t BUFFER_CAPACITY = 8192;

    Sink& write(const std::u16string& text) final;
    std::u16string encodingName() const override;

    /// Converts all that is buffered and passes it on, even if it is empty.
    void flush() override;

protected:
    ConvertingSink();

    /// Receives one converted batch of UTF-8, which may be empty.
    virtual void writeConverted(const std::string& bytes) = 0;

private:
    friend detail::AppendWindow detail::appendWindowOf(Sink& sink);

    corda::i18n::codecvt_ustring_to_string converter;
    /// What has been written and not converted yet: at most BUFFER_CAPACITY code units, unless the
    /// last conversion failed.
    std::u16string buffer;
};

/// Appends UTF-8 to a byte string.
class StdStringSink final : public ConvertingSink
{
public:
    /// Empties @p target, after the base has been built: if that throws, @p target is as it was.
    explicit StdStringSink(std::string& target);

protected:
    void writeConverted(const std::string& bytes) override;

private:
    std::string& target;
};

/// Inserts UTF-8 into a stream. The stream's state is neither tested nor reported.
class StreamSink final : public ConvertingSink
{
public:
    explicit StreamSink(std::ostream& stream);

    /// As in the base; then flushes the stream.
    void flush() override;

protected:
    void writeConverted(const std::string& bytes) override;

private:
    std::ostream& stream;
};

} // namespace tarn::utils
