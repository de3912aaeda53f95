// Usage: convert.js LIBRARY to-xml|to-json INPUT OUTPUT
// Converts the file INPUT to OUTPUT with a library of the npm registry, by its defaults. The JSON
// is an array; XML needs one root, so it becomes the elements `record` in the element `records`.
"use strict";
const fs = require("fs");

const libraries = {
    "fast-xml-parser": ({ XMLBuilder, XMLParser }) => ({
        "to-xml": (value) => new XMLBuilder().build(value),
        "to-json": (text) => new XMLParser().parse(text),
    }),
    // Its default is a list of elements with their types; plain values need the other form.
    "xml-js": ({ js2xml, xml2js }) => ({
        "to-xml": (value) => js2xml(value, { compact: true }),
        "to-json": (text) => xml2js(text, { compact: true }),
    }),
    "xmlbuilder2": ({ create, convert }) => ({
        "to-xml": (value) => create(value).end(),
        "to-json": (text) => convert(text, { format: "object" }),
    }),
};

const [library, direction, input, output] = process.argv.slice(2);
const convert = libraries[library](require(library))[direction];
const text = fs.readFileSync(input, "utf8");
fs.writeFileSync(
    output,
    direction === "to-xml"
        ? convert({ records: { record: JSON.parse(text) } })
        : JSON.stringify(convert(text)),
);
