"""Usage: convert.py to-xml|to-json INPUT OUTPUT

Converts the file INPUT to OUTPUT with xmltodict, by its defaults. The JSON is an array; XML needs one
root, so it becomes the elements `record` in the element `records`.
"""

import json
import sys

import xmltodict

direction, input_name, output_name = sys.argv[1:]
with open(input_name, "rb") as source, open(output_name, "w", encoding="utf-8") as target:
    if direction == "to-xml":
        xmltodict.unparse({"records": {"record": json.load(source)}}, output=target)
    else:
        target.write(json.dumps(xmltodict.parse(source)))
