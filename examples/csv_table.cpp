// Turns CSV (RFC 4180, UTF-8) on standard input into a spreadsheet in the flat OpenDocument format
// on standard output, row by row: memory grows with the longest row, not with the file.
//
//     csv_table <peaks.csv >peaks.fods
#include <tarn/xml/XmlWriter.hpp>

#include <charconv>
#include <clocale>
#include <cmath>
#include <cuchar>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

const std::u16string NONE;
const std::u16string OFFICE = u"urn:oasis:names:tc:opendocument:xmlns:office:1.0";
const std::u16string TABLE = u"urn:oasis:names:tc:opendocument:xmlns:table:1.0";
const std::u16string TEXT = u"urn:oasis:names:tc:opendocument:xmlns:text:1.0";

class Error : public std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Reads one row of fields. Quoted fields may hold commas, line ends and doubled quotes.
/// @returns whether there was a row.
bool readRow(std::istream& input, std::vector<std::string>& fields)
{
    fields.clear();
    if (input.peek() == std::istream::traits_type::eof()) {
        return false;
    }
    fields.emplace_back();
    bool isQuoted = false;
    for (char byte; input.get(byte);) {
        if (isQuoted) {
            if (byte != '"') {
                fields.back() += byte;
            } else if (input.peek() == '"') {
                fields.back() += static_cast<char>(input.get());
            } else {
                isQuoted = false;
            }
        } else if (byte == '"' && fields.back().empty()) {
            isQuoted = true;
        } else if (byte == ',') {
            fields.emplace_back();
        } else if (byte == '\n') {
            return true;
        } else if (byte != '\r' || input.peek() != '\n') {
            fields.back() += byte;
        }
    }
    if (isQuoted) {
        throw Error("the quoted field at its end is not closed");
    }
    return true;
}

/// Needs a UTF-8 locale for characters. Refuses U+0000 too, which no XML document can hold.
std::u16string fromUtf8(const std::string& bytes)
{
    constexpr auto SECOND_SURROGATE = static_cast<std::size_t>(-3); // came with the bytes before
    std::u16string text;
    text.reserve(bytes.size());
    std::mbstate_t state{};
    for (std::size_t position = 0; position < bytes.size() || !std::mbsinit(&state);) {
        char16_t unit = 0;
        std::size_t length =
            std::mbrtoc16(&unit, bytes.data() + position, bytes.size() - position, &state);
        if (length == SECOND_SURROGATE) {
            length = 0;
        } else if (length == 0 || length > bytes.size()) {
            throw Error("not UTF-8 text");
        }
        text += unit;
        position += length;
    }
    return text;
}

bool isNumber(const std::string& field)
{
    double number = 0;
    const char* const end = field.data() + field.size();
    const auto [rest, error] = std::from_chars(field.data(), end, number);
    return !field.empty() && rest == end && error == std::errc() && std::isfinite(number);
}

void writeCell(tarn::utils::XmlWriter& writer, const std::string& field)
{
    writer.writeStartElement(u"table-cell", TABLE, NONE);
    if (!field.empty()) {
        const std::u16string text = fromUtf8(field);
        if (isNumber(field)) {
            writer.writeAttribute(u"value-type", OFFICE, u"float");
            writer.writeAttribute(u"value", OFFICE, text);
        } else {
            writer.writeAttribute(u"value-type", OFFICE, u"string");
        }
        writer.writeElement(u"p", TEXT, text);
    }
    writer.writeEndElement();
}

void convert(std::istream& input, tarn::utils::XmlWriter& writer)
{
    writer.writeStartDocument();
    writer.writeStartElement(u"document", OFFICE, u"office");
    writer.writeAttribute(u"version", OFFICE, u"1.2");
    writer.writeAttribute(u"mimetype", OFFICE, u"application/vnd.oasis.opendocument.spreadsheet");
    writer.writeNamespace(TABLE, u"table");
    writer.writeNamespace(TEXT, u"text");
    writer.writeStartElement(u"body", OFFICE, NONE);
    writer.writeStartElement(u"spreadsheet", OFFICE, NONE);
    writer.writeStartElement(u"table", TABLE, NONE);
    writer.writeAttribute(u"name", TABLE, u"Table 1");
    std::vector<std::string> fields;
    std::size_t rowNumber = 1;
    try {
        for (; readRow(input, fields); ++rowNumber) {
            writer.writeStartElement(u"table-row", TABLE, NONE);
            for (const std::string& field : fields) {
                writeCell(writer, field);
            }
            writer.writeEndElement();
        }
    } catch (const Error& error) {
        throw Error("row " + std::to_string(rowNumber) + ": " + error.what());
    }
    writer.writeEndDocument();
}

} // namespace

int main()
{
    std::ios::sync_with_stdio(false);
    try {
        if (std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr) {
            throw Error("this system has no locale C.UTF-8");
        }
        std::cout.exceptions(std::ios::badbit | std::ios::failbit);
        tarn::utils::XmlWriter writer(std::cout);
        convert(std::cin, writer);
        std::cout << '\n' << std::flush;
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "csv_table: " << error.what() << '\n';
        return 1;
    }
}
