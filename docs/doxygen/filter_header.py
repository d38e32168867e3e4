#!/usr/bin/python3
"""usage: filter_header.py HEADER

Prints the public header with its comments in Doxygen's notation:
  - what stands before a function, an enum or a macro, or behind a value, documents it;
  - a line "name   text" becomes the documentation of the parameter of that name, so that Doxygen misses those
    that are not described and finds those that do not exist;
  - other indented lines stay as they are set;
  - a comment that begins with a ruler begins a group;
  - the first comment becomes the main page.
"""
import re
import sys

COMMENT = re.compile(r"^/\*(.*?)\*/\n", re.M | re.S)
BEHIND = re.compile(r"^(\s+SORVO_AUDIO_\w+ = [^/\n]*|#define [^/\n]*)/\* ", re.M)
DECLARATION = re.compile(r"(?:SORVO_AUDIO_API int \w+\(([^)]*)\);|enum \{|#)")
DIRECTIONS = {"out": "out", "in and out": "in,out"}


def body(comment):
    """Lines of a comment without its stars."""
    return [re.sub(r"^ \* ?", "", line).rstrip() for line in comment.strip(" \n").splitlines()]


def described(lines, parameters):
    """Lines with parameters and set pieces marked."""
    result, verbatim, in_parameter = [], False, False
    for line in lines:
        indent = len(line) - len(line.lstrip())
        entry = re.match(r"  (\w+)  +(?:(in and out|out)[:,] )?(.*)", line)
        is_entry = bool(entry) and entry[1] in parameters
        in_parameter = is_entry or (in_parameter and indent > 2)
        as_set = indent >= 2 and not in_parameter
        if as_set != verbatim and (line or verbatim):
            result.append("@verbatim" if as_set else "@endverbatim")
            verbatim = as_set
        result.append(f"@param[{DIRECTIONS.get(entry[2], 'in')}] {entry[1]} {entry[3]}" if is_entry else line)
    return result + ["@endverbatim"] * verbatim


def converted(match, group_n=[0]):
    text = match.string[match.end():]
    lines = body(match[1])
    if match.start() == 0:
        return "\n".join(["/** @file\n" + lines[0], "*/", "/** @mainpage", *described(lines[1:], ()), "*/\n"])
    if lines[0].startswith("----"):
        group_n[0] += 1
        close = "/** @} */\n" if group_n[0] > 1 else ""
        return "\n".join([close + f"/** @defgroup group{group_n[0]} {lines[1]}", *described(lines[2:], ()),
                          "@{ */\n"])
    declaration = DECLARATION.match(text)
    if not declaration:
        return match[0]
    parameters = re.findall(r"(\w+)(?:,|$)", declaration[1] or "")
    returns = ["", "@return a status code"] if parameters else []
    return "\n".join(["/**", *described(lines, parameters), *returns, "*/\n"])


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        header = file.read()
    header = BEHIND.sub(r"\1/**< ", header)
    header = COMMENT.sub(converted, header)
    print(header.replace("#ifdef __cplusplus\n}", "/** @} */\n#ifdef __cplusplus\n}"), end="")


if __name__ == "__main__":
    main()
