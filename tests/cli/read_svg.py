"""Prints what a picture holds as another program reads it: read_svg.py FILE"""
import collections
import sys
import xml.etree.ElementTree

root = xml.etree.ElementTree.parse(sys.argv[1]).getroot()
print(root.get("width"), root.get("height"))
elements = collections.Counter()
for element in root.iter():
    name = element.tag.split("}")[1]
    elements[name] += 1
    if element.text and element.text.strip():
        print(f"{name}: {element.text}")
print(*(f"{count} {name}" for name, count in sorted(elements.items())), sep=", ")
