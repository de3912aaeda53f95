// Logs events to a stream, and tells a crash data service what a crash report should carry. Each
// event reaches the stream as soon as it is logged. A log that is never closed lacks nothing but
// its last line, and so is not taken for a complete one.
#include <tarn/document/Document.hpp>
#include <tarn/services/CrashDataService.hpp>
#include <tarn/utils/num_to_string.hpp>

#include <array>
#include <atomic>
#include <chrono>
#include <exception>
#include <iostream>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

using namespace std::chrono_literals;
using namespace tarn::document;
using tarn::utils::services::CrashDataService;

/// A small provider of crash data. Its entries stand in the object itself, so that a report reads
/// them without a lock and without allocating.
class CrashNotes : public CrashDataService
{
public:
    void setCrashData(const std::u16string& key, const std::u16string& value) override
    {
        if (key.size() > MOST_UNITS || value.size() > MOST_UNITS) {
            throw std::length_error("a crash note has 80 UTF-16 code units at most");
        }
        const std::lock_guard lock(mutex);
        Note* const free = findFree();
        if (free == nullptr) {
            throw std::length_error("no room for another crash note");
        }
        free->key.assign(key);
        free->value.assign(value);
        Note* const old = find(key);
        free->isSet = true; // From here on a report can read it.
        if (old != nullptr) {
            old->isSet = false;
        }
    }

    void removeCrashData(const std::u16string& key) override
    {
        const std::lock_guard lock(mutex);
        Note* const old = find(key);
        if (old != nullptr) {
            old->isSet = false;
        }
    }

    template <class Function>
    void forEach(Function use) const
    {
        for (const Note& note : notes) {
            if (note.isSet) {
                use(note.key.view(), note.value.view());
            }
        }
    }

private:
    static constexpr std::size_t MOST_UNITS = 80;

    class Text
    {
    public:
        void assign(std::u16string_view text) { size = text.copy(units.data(), units.size()); }
        std::u16string_view view() const { return {units.data(), size}; }

    private:
        std::array<char16_t, MOST_UNITS> units;
        std::size_t size = 0;
    };

    struct Note
    {
        Text key;
        Text value;
        std::atomic<bool> isSet = false;
    };

    Note* find(std::u16string_view key)
    {
        for (Note& note : notes) {
            if (note.isSet && note.key.view() == key) {
                return &note;
            }
        }
        return nullptr;
    }

    Note* findFree()
    {
        for (Note& note : notes) {
            if (!note.isSet) {
                return &note;
            }
        }
        return nullptr;
    }

    std::mutex mutex;          // Of those who write.
    std::array<Note, 8> notes; // One of them stays free, for a value to be replaced.
};

class EventLog
{
public:
    EventLog(std::ostream& output, CrashDataService* crashData)
        : document(output, {.unrepresentable = Unrepresentable::replace}),
          log(document.root("log")), crashData(crashData)
    {
        document.flush();
    }

    void add(std::chrono::sys_seconds time, std::string_view level, const std::u16string& message)
    {
        log.child("event").attribute("time", time).attribute("level", level).text(message);
        document.flush();
        ++events;
        // [snippet: crash-data]
        if (crashData != nullptr) {
            crashData->setCrashData(u"events", tarn::utils::num_to_string(events));
            crashData->setCrashData(u"last event", message);
        }
        // [end]
    }

    /// What a crash report would tell, among the events.
    void addReport(const CrashNotes& notes)
    {
        Element report = log.child("report");
        notes.forEach([&](std::u16string_view key, std::u16string_view value) {
            report.child("note").attribute("key", key).text(value);
        });
        report.end();
        document.flush();
    }

    void close() { document.finish(); }

private:
    Document document;
    Element log;
    CrashDataService* crashData;
    unsigned long events = 0;
};

} // namespace

int main()
{
    try {
        CrashNotes notes;
        EventLog log(std::cout, &notes);
        constexpr auto START = std::chrono::sys_days(2026y / 11 / 24) + 9h + 15min;
        notes.setCrashData(u"step", u"reading tracks");
        log.add(START + 2s, "info", u"opened \"tracks & waypoints\"");
        log.add(START + 3s, "warning", u"3 < 5 points\tin segment \u2116\u00A07");
        notes.removeCrashData(u"step");
        log.add(START + 4s, "error", u"bad header: \x01\x02\x1B[31mRIFF");
        log.addReport(notes);
        log.close();
        std::cout << '\n' << std::flush;
    } catch (const std::exception& error) {
        std::cerr << "event_log: " << error.what() << '\n';
        return 1;
    }
    return std::cout ? 0 : 1;
}
