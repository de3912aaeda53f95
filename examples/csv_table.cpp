// Turns CSV (RFC 4180, UTF-8) on standard input into a spreadsheet in the flat OpenDocument format
// on standard output, row by row: memory grows with the longest row, not with the file.
//
//     csv_table <peaks.csv >peaks.fods
#include <tarn/document/Document.hpp>

#include <charconv>
#include <cmath>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace tarn::document;

constexpr Namespace OFFICE{"urn:oasis:names:tc:opendocument:xmlns:office:1.0", "office"};
constexpr Namespace TABLE{"urn:oasis:names:tc:opendocument:xmlns:table:1.0", "table"};
constexpr Namespace TEXT{"urn:oasis:names:tc:opendocument:xmlns:text:1.0", "text"};
constexpr Name ROW{TABLE, "table-row"}, CELL{TABLE, "table-cell"}, PARAGRAPH{TEXT, "p"},
    VALUE_TYPE{OFFICE, "value-type"}, VALUE{OFFICE, "value"};

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
        throw std::runtime_error("the quoted field at its end is not closed");
    }
    return true;
}

bool isNumber(const std::string& field)
{
    double number = 0;
    const char* const end = field.data() + field.size();
    const auto [rest, error] = std::from_chars(field.data(), end, number);
    return !field.empty() && rest == end && error == std::errc() && std::isfinite(number);
}

void convert(std::istream& input, Document& document)
{
    Element root = document.root(Name(OFFICE, "document")).declare(TABLE).declare(TEXT);
    root.attribute(Name(OFFICE, "version"), "1.2");
    root.attribute(Name(OFFICE, "mimetype"), "application/vnd.oasis.opendocument.spreadsheet");
    Element body = root.child(Name(OFFICE, "body"));
    Element sheet = body.child(Name(OFFICE, "spreadsheet"));
    Element table = sheet.child(Name(TABLE, "table")).attribute(Name(TABLE, "name"), "Table 1");
    std::vector<std::string> fields;
    std::size_t rowNumber = 1;
    try {
        for (; readRow(input, fields); ++rowNumber) {
            Element row = table.child(ROW);
            for (const std::string& field : fields) {
                Element cell = row.child(CELL);
                if (isNumber(field)) {
                    cell.attribute(VALUE_TYPE, "float").attribute(VALUE, field);
                } else if (!field.empty()) {
                    cell.attribute(VALUE_TYPE, "string");
                }
                if (!field.empty()) {
                    cell.add(PARAGRAPH, field);
                }
            }
        }
    } catch (const std::runtime_error& error) {
        throw std::runtime_error("row " + std::to_string(rowNumber) + ": " + error.what());
    }
    document.finish();
}

} // namespace

int main()
{
    std::ios::sync_with_stdio(false);
    try {
        Document document(std::cout);
        convert(std::cin, document);
        std::cout << '\n' << std::flush;
    } catch (const std::exception& error) {
        std::cerr << "csv_table: " << error.what() << '\n';
        return 1;
    }
    return std::cout ? 0 : 1;
}
