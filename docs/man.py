#!/usr/bin/env python3
"""man.py XML VERSION DEST makes compressed manual pages of Doxygen's XML: one of section 3 for every exported
procedure, one of section 7 for every family with its conventions, records and flags, and tessel(7)
with all of them."""

import gzip
import pathlib
import re
import sys
import textwrap
import xml.etree.ElementTree as ET

LINE = 78


def escape(text):
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return re.sub(r"^([.'])", r"\\&\1", text, flags=re.M)


def inline(node):
    """The text of a node with its markup, on one line."""
    parts = [escape(node.text or "")]
    for child in node:
        content = inline(child)
        if child.tag in ("computeroutput", "emphasis"):
            content = f"\\fI{content}\\fP"
        elif child.tag == "bold":
            content = f"\\fB{content}\\fP"
        elif child.tag not in ("ref", "ulink", "para", "heading", "sp", "anchor"):
            raise ValueError(f"markup that the manual pages do not know: {child.tag}")
        parts += [content, escape(child.tail or "")]
    return " ".join("".join(parts).split())


def blocks(node):
    """The paragraphs and lists below a description, without what stands in sections of its own."""
    out = []
    for para in node.findall("para"):
        text = ET.Element("para")
        text.text = para.text

        def flush():
            line = inline(text)
            if line:
                out.append(".PP\n" + line)
            text.clear()

        for child in para:
            if child.tag in ("itemizedlist", "orderedlist"):
                flush()
                for item in child.findall("listitem"):
                    rest = blocks(item)
                    out.append(".IP \\(bu 2\n" + "\n".join(rest).removeprefix(".PP\n"))
                text.text = child.tail
            elif child.tag in ("verbatim", "programlisting"):
                flush()
                out.append(".PP\n.nf\n" + escape("".join(child.itertext())) + "\n.fi")
                text.text = child.tail
            elif child.tag in ("parameterlist", "simplesect"):
                flush()
                text.text = child.tail
            else:
                text.append(child)
        flush()
    return out


def described(member):
    """Brief and detailed description."""
    return blocks(member.find("briefdescription")) + blocks(member.find("detaileddescription"))


def brief(member):
    return inline(member.find("briefdescription")).rstrip(".")


def one_line(member):
    """For the line that man -k shows."""
    text = brief(member)
    return text[:1].lower() + text[1:] if not text[1:2].isupper() else text


def sentences(paragraphs):
    """With a capital and a full stop, which the comments of results go without."""
    text = "\n".join(paragraphs).removeprefix(".PP\n")
    return [text[:1].upper() + text[1:] + ("" if text.endswith((".", ":")) else ".")]


def name_of(member):
    return member.findtext("name")


def plain(node):
    return " ".join("".join(node.itertext()).split()) if node is not None else ""


def declaration(member):
    kind = plain(member.find("type"))
    start = kind + ("" if kind.endswith("*") else " ") + name_of(member) + "("
    arguments = []
    for param in member.findall("param"):
        of = plain(param.find("type"))
        name = param.findtext("declname") or ""
        array = param.findtext("array") or ""
        space = "" if of.endswith("*") or not name else " "
        arguments.append((of + space + name + array).replace(" ", "\N{NO-BREAK SPACE}"))
    whole = start + (", ".join(arguments) or "void") + ");"
    # textwrap breaks at a space alone, not at one of those between the words of an argument.
    wrapped = textwrap.wrap(whole, LINE, subsequent_indent=" " * 4, break_on_hyphens=False)
    return "\n".join(escape(line.replace("\N{NO-BREAK SPACE}", " ")) for line in wrapped)


def header(title, section, version):
    return [f'.TH "{title}" {section} "" "tessel {version}" "tessel"', ".ad l", ".nh"]


def see_also(references):
    """References as (name, section), without doubles, each on a line of its own."""
    lines = []
    seen = list(dict.fromkeys(references))
    for place, (name, section) in enumerate(seen):
        comma = " ," if place + 1 < len(seen) else ""
        lines.append(f".BR {escape(name)} ({section}){comma}")
    return lines


class Family:
    def __init__(self, xml, compound):
        self.header = compound.find("location").get("file")
        self.name = pathlib.PurePath(self.header).stem
        self.compound = compound
        members = list(compound.iter("memberdef"))
        self.functions = [m for m in members if m.get("kind") == "function"]
        self.enums = [m for m in members if m.get("kind") == "enum"]
        self.types = [m for m in members if m.get("kind") == "typedef" and plain_type(m)]
        self.macros = [
            m for m in members
            if m.get("kind") == "define" and not name_of(m).endswith("_H")
        ]
        self.records = []
        for inner in compound.findall("innerclass"):
            record = ET.parse(xml / (inner.get("refid") + ".xml")).find("compounddef")
            self.records.append(record)

    def page(self):
        return f"tessel_{self.name}"


def plain_type(member):
    """Whether a type is more than a record's short name."""
    return "(*" in plain(member.find("type"))


def arguments(member):
    out = []
    for item in member.find("detaileddescription").iter("parameteritem"):
        names = [plain(n) for n in item.iter("parametername")]
        texts = blocks(item.find("parameterdescription"))
        out += [".TP", f".I {escape(', '.join(names))}"]
        out.append("\n.IP\n".join(text.removeprefix(".PP\n") for text in texts))
    return out


def results(member):
    """The paragraphs of what a procedure gives."""
    sections = member.find("detaileddescription").iter("simplesect")
    return [text for s in sections if s.get("kind") == "return" for text in sentences(blocks(s))]


def function_page(member, family, version, known):
    name = name_of(member)
    out = header(name, 3, version)
    out += [".SH NAME", f"{name} \\- {one_line(member)}"]
    out += [".SH SYNOPSIS", ".nf", f".B #include <{family.header}>", ".PP",
            f"\\fB{declaration(member)}\\fP", ".fi"]
    out += [".SH DESCRIPTION"] + described(member)

    listed = arguments(member)
    out += [".SH ARGUMENTS"] + listed if listed else []

    given = results(member)
    out += [".SH RETURN VALUE"] + given if given else []
    references = []
    for section in member.find("detaileddescription").iter("simplesect"):
        if section.get("kind") == "see":
            references += re.findall(r"\w+", plain(section))
    others = [(r, 3) for r in references if r in known and r != name]
    out += [".SH SEE ALSO"] + see_also(others + [(family.page(), 7), ("tessel", 7)])
    return "\n".join(out) + "\n"


def family_page(family, version):
    out = header(family.page(), 7, version)
    out += [".SH NAME", f"{family.page()} \\- {one_line(family.compound)}"]
    out += [".SH SYNOPSIS", f".B #include <{family.header}>"]
    out += [".SH DESCRIPTION"] + blocks(family.compound.find("detaileddescription"))
    if family.records:
        out.append(".SH RECORDS")
    for record in family.records:
        out += [f".SS {escape(record.findtext('compoundname'))}"] + described(record)
        for field in record.iter("memberdef"):
            of = plain(field.find("type"))
            array = field.findtext("argsstring") or ""
            space = "" if of.endswith("*") else " "
            out += [".TP", f".B {escape(of + space + name_of(field) + array)}",
                    "\n".join(described(field)).replace(".PP\n", "")]
    for title, members in ("PROCEDURE TYPES", family.types), ("MACROS", family.macros):
        if members:
            out.append(f".SH {title}")
        for member in members:
            definition = plain(member.find("type")) + " " + name_of(member)
            definition += plain(member.find("argsstring"))
            out += [f".SS {escape(definition)}"] + described(member) + arguments(member)
            given = results(member)
            out += [".PP", "Result: " + given[0]] if given else []
    if family.enums:
        out.append(".SH FLAGS AND RESULTS")
    for enum in family.enums:
        out += described(enum)
        for value in enum.findall("enumvalue"):
            initial = plain(value.find("initializer"))
            out += [".TP", f".B {escape(name_of(value) + ' ' + initial)}",
                    "\n".join(described(value)).replace(".PP\n", "")]
    out += [".SH PROCEDURES"]
    for member in family.functions:
        out += [".TP", f".BR {name_of(member)} (3)", brief(member)]
    out += [".SH SEE ALSO"] + see_also([("tessel", 7)])
    return "\n".join(out) + "\n"


def overview_page(families, base, version):
    out = header("tessel", 7, version)
    out += [".SH NAME", "tessel \\- general\\-purpose utility library with a C interface"]
    out += [".SH SYNOPSIS", ".nf", ".B #include <tessel.h>", ".PP",
            ".B cc program.c $(pkg\\-config \\-\\-cflags \\-\\-libs tessel)", ".fi"]
    out += [".SH DESCRIPTION", "One shared library that needs nothing but the C library.",
            "Every family has a header of its own and a page that tells its conventions:"]
    for family in families:
        out += [".TP", f".BR {family.page()} (7)", brief(family.compound)]
    out += [".SS Conventions of all families"]
    out += blocks(base.compound.find("detaileddescription"))
    for family in families:
        if not family.functions:
            continue
        out += [f".SS {family.header}"]
        names = [f"\\fB{name_of(member)}\\fP(3)" for member in family.functions]
        out.append(",\n".join(names) + ".")
    return "\n".join(out) + "\n"


def main():
    xml, version, dest = pathlib.Path(sys.argv[1]), sys.argv[2], pathlib.Path(sys.argv[3])
    families = []
    for path in sorted(xml.glob("*_8h.xml")):
        compound = ET.parse(path).find("compounddef")
        if compound.findtext("compoundname") != "tessel.h":
            families.append(Family(xml, compound))
    base = next(f for f in families if f.name == "base")
    known = {name_of(member) for f in families for member in f.functions}

    pages = {}
    for family in families:
        pages[f"man7/{family.page()}.7"] = family_page(family, version)
        for member in family.functions:
            name = name_of(member)
            pages[f"man3/{name}.3"] = function_page(member, family, version, known)
    pages["man7/tessel.7"] = overview_page(families, base, version)

    for path, text in pages.items():
        file = dest / (path + ".gz")
        file.parent.mkdir(parents=True, exist_ok=True)
        # Without the time, so that the same text gives the same file.
        file.write_bytes(gzip.compress(text.encode(), mtime=0))


main()
