#include "import/CsvRecords.h"

#include <csv.h>

#include <algorithm>

namespace {

// No blank is trimmed: the layouts' own rules decide what a blank means, and
// a field split at an unquoted comma must join back to the text as written.
int noSpace(unsigned char) { return 0; }

}  // namespace

CsvRecords::CsvRecords(Sink sink) : sink_(std::move(sink)), parser_(new csv_parser)
{
    // Every line end is reported, so lines can be counted for the messages.
    csv_init(parser_, CSV_REPALL_NL);
    csv_set_space_func(parser_, noSpace);
}

CsvRecords::~CsvRecords()
{
    csv_free(parser_);
    delete parser_;
}

bool CsvRecords::feed(std::string_view text)
{
    return csv_parse(parser_, text.data(), text.size(), onField, onRecordEnd, this) == text.size();
}

bool CsvRecords::finish()
{
    return csv_fini(parser_, onField, onRecordEnd, this) == 0;
}

std::string CsvRecords::error() const
{
    return csv_strerror(csv_error(parser_));
}

void CsvRecords::onField(void* text, size_t size, void* self)
{
    auto* me = static_cast<CsvRecords*>(self);
    const char* begin = static_cast<const char*>(text);
    me->record_.fields.emplace_back(begin, size);
    me->breaksInFields_ += static_cast<uint32_t>(std::count(begin, begin + size, '\n'));
}

void CsvRecords::onRecordEnd(int terminator, void* self)
{
    auto* me = static_cast<CsvRecords*>(self);
    const bool empty = me->record_.fields.empty();
    // The line feed of a CRLF pair ends no line of its own.
    if (terminator == '\n' && me->afterCarriageReturn_ && empty) {
        me->afterCarriageReturn_ = false;
        return;
    }
    if (!empty) {
        me->record_.line = me->line_;
        me->sink_(me->record_);
        me->record_.fields.clear();
    }
    me->line_ += 1 + me->breaksInFields_;
    me->breaksInFields_ = 0;
    me->afterCarriageReturn_ = terminator == '\r';
}
