#!/usr/bin/env python3
"""Writes JapaneseTables.inc: the decoding tables of glibc iconv's CP932 and EUC-JP-MS, and the
characters whose encoding differs from what inverting those tables gives.

glibc's conversions are the authority; this script asks them about every code and records their
answers. A byte sequence decodes as:
  - one byte: kXxxSingles[byte], or kNoChar when the byte is not a character by itself;
  - two bytes: the lead byte's row of the pair plane (kXxxPairRows[lead], kNoRow for none), the
    trail byte's cell from the plane's first trail byte; kNoChar for a code iconv refuses;
  - EUC-JP only, 0x8F and two bytes: the same in the triple plane.
Encoding inverts these tables, taking the first code in table order (singles, then pairs, then
triples, each by ascending bytes) for each character. kXxxEncodings lists every character for
which iconv gives another code, or none: a character that iconv refuses, or writes as a code that
reads back as a different character (U+00A5 as a backslash, say), must not be saved. A code is
stored in 16 bits: one byte below 0x100, two bytes as lead << 8 | trail, and a triple (0x8F
b2 b3) as (b2 & 0x7F) << 8 | b3, whose high byte 0x21-0x7E no other code has.

Usage: python3 gen_japanese_tables.py [output]  (default: JapaneseTables.inc next to this file)
"""
import ctypes
import ctypes.util
import os
import sys

NO_CHAR = 0xFFFF
NO_ROW = 0xFF
SS3 = 0x8F

libc = ctypes.CDLL(ctypes.util.find_library("c"), use_errno=True)
libc.iconv_open.restype = ctypes.c_void_p
libc.iconv_open.argtypes = [ctypes.c_char_p, ctypes.c_char_p]
libc.iconv.restype = ctypes.c_size_t
libc.iconv.argtypes = [ctypes.c_void_p] + [ctypes.c_void_p] * 4


class Iconv:
    def __init__(self, to, source):
        self.cd = libc.iconv_open(to.encode(), source.encode())
        if self.cd in (None, ctypes.c_void_p(-1).value):
            sys.exit(f"iconv cannot convert {source} to {to}")
        self.out = ctypes.create_string_buffer(64)

    def __call__(self, data):
        """The whole conversion of data, or None when iconv refuses any of it."""
        libc.iconv(self.cd, None, None, None, None)
        source = ctypes.create_string_buffer(data, len(data))
        in_ptr = ctypes.c_void_p(ctypes.addressof(source))
        in_left = ctypes.c_size_t(len(data))
        out_ptr = ctypes.c_void_p(ctypes.addressof(self.out))
        out_left = ctypes.c_size_t(len(self.out))
        refs = [ctypes.byref(v) for v in (in_ptr, in_left, out_ptr, out_left)]
        if libc.iconv(self.cd, *refs) != 0 or in_left.value:
            return None
        if libc.iconv(self.cd, None, None, refs[2], refs[3]) != 0:
            return None
        return self.out.raw[:len(self.out) - out_left.value]


class Charset:
    def __init__(self, prefix, iconv_name, first_trail, last_trail, has_triples):
        self.prefix = prefix
        self.iconv_name = iconv_name
        self.decoder = Iconv("UTF-16LE", iconv_name)
        self.encoder = Iconv(iconv_name, "UTF-16LE")
        self.first_trail = first_trail
        self.width = last_trail - first_trail + 1
        self.has_triples = has_triples

    def decode_unit(self, data):
        wide = self.decoder(data)
        if wide is None:
            return None
        if len(wide) != 2:
            sys.exit(f"{self.prefix}: {data.hex()} does not decode to one UTF-16 unit")
        return int.from_bytes(wide, "little")

    def plane(self, prefix):
        """Rows of the two-byte codes after prefix, for the lead bytes that have any."""
        rows = {}
        for lead in range(0x80, 0x100):
            if not prefix and self.singles[lead] != NO_CHAR:
                continue
            cells = [self.decode_unit(prefix + bytes([lead, self.first_trail + k]))
                     for k in range(self.width)]
            if any(c is not None for c in cells):
                rows[lead] = [NO_CHAR if c is None else c for c in cells]
        return rows

    def build(self):
        self.singles = [NO_CHAR if (u := self.decode_unit(bytes([b]))) is None else u
                        for b in range(256)]
        if self.singles[:0x80] != list(range(0x80)):
            sys.exit(f"{self.prefix}: bytes 0x00-0x7F are not ASCII")
        self.pairs = self.plane(b"")
        self.triples = self.plane(bytes([SS3])) if self.has_triples else {}
        self.check_model()
        self.encodings = self.encoding_exceptions()

    def check_model(self):
        """Every sequence of two bytes, and 0x8F with two more, decodes as the tables say."""
        for first in range(0x80, 0x100):
            prefixes = [bytes([SS3, first])] if first == SS3 and self.has_triples else []
            for prefix in [bytes([first])] + prefixes:
                for last in range(256):
                    data = prefix + bytes([last])
                    if self.decoder(data) != self.model(data):
                        sys.exit(f"{self.prefix}: {data.hex()} is not decoded as the tables say")

    def model(self, data):
        units = []
        while data:
            triple = data[0] == SS3 and self.has_triples
            rows, lead = (self.triples, data[1:]) if triple else (self.pairs, data)
            k = lead[1] - self.first_trail if len(lead) > 1 else -1
            if self.singles[data[0]] != NO_CHAR:
                units.append(self.singles[data[0]])
                data = data[1:]
            elif 0 <= k < self.width and rows.get(lead[0], [NO_CHAR] * self.width)[k] != NO_CHAR:
                units.append(rows[lead[0]][k])
                data = lead[2:]
            else:
                return None
        return b"".join(u.to_bytes(2, "little") for u in units)

    def table_order(self):
        """(unit, code) of every code in table order."""
        for b in range(0x80, 0x100):
            if self.singles[b] != NO_CHAR:
                yield self.singles[b], b
        for high, rows in ((0, self.pairs), (SS3, self.triples)):
            for lead, cells in rows.items():
                code_lead = lead if high == 0 else lead & 0x7F
                for k, unit in enumerate(cells):
                    if unit != NO_CHAR:
                        yield unit, code_lead << 8 | (self.first_trail + k)

    def iconv_code(self, unit):
        """The code iconv writes for unit when it reads back as unit; else 0."""
        wide = unit.to_bytes(2, "little")
        data = self.encoder(wide)
        if data is None or self.decoder(data) != wide:
            return 0
        if len(data) == 1:
            return data[0]
        if len(data) == 2 and not (self.has_triples and data[0] == SS3):
            return data[0] << 8 | data[1]
        if len(data) == 3 and self.has_triples and data[0] == SS3:
            return (data[1] & 0x7F) << 8 | data[2]
        sys.exit(f"{self.prefix}: U+{unit:04X} encodes as {data.hex()}")

    def encoding_exceptions(self):
        inverse = {}
        for unit, code in self.table_order():
            inverse.setdefault(unit, code)
        for unit in range(0x80):
            if self.iconv_code(unit) != unit:
                sys.exit(f"{self.prefix}: U+{unit:04X} is not encoded as ASCII")
        exceptions = []
        for unit in range(0x80, 0x10000):
            code = self.iconv_code(unit)
            if code != inverse.get(unit, 0):
                exceptions.append((unit, code))
        return exceptions


def words(values, fmt, per_line):
    lines = []
    for i in range(0, len(values), per_line):
        lines.append("    " + " ".join(fmt.format(v) + "," for v in values[i:i + per_line]))
    return "\n".join(lines)


def emit_plane(out, name, charset, rows):
    index = [NO_ROW] * 256
    cells = []
    for n, (lead, row) in enumerate(rows.items()):
        index[lead] = n
        cells.extend(row)
    out.append(f"constinit const std::uint8_t {name}Rows[256] = {{")
    out.append(words(index, "0x{:02X}", 12))
    out.append("};")
    out.append(f"constinit const char16_t {name}Cells[{len(cells)}] = {{")
    out.append(words(cells, "0x{:04X}", 12))
    out.append("};")
    out.append(f"constinit const Plane {name} = {{{name}Rows, {name}Cells, "
               f"0x{charset.first_trail:02X}, {charset.width}}};")


def emit(charset):
    p = charset.prefix
    out = [f"// iconv {charset.iconv_name}", f"constinit const char16_t {p}Singles[256] = {{"]
    out.append(words(charset.singles, "0x{:04X}", 12))
    out.append("};")
    emit_plane(out, f"{p}Pairs", charset, charset.pairs)
    if charset.triples:
        emit_plane(out, f"{p}Triples", charset, charset.triples)
    exceptions = [f"{{0x{u:04X}, 0x{c:04X}}}" for u, c in charset.encodings]
    out.append(f"constinit const std::array<Encoding, {len(exceptions)}> {p}Encodings = {{{{")
    if exceptions:
        out.append(words(exceptions, "{}", 5))
    out.append("}};")
    return "\n".join(out)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    path = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "JapaneseTables.inc")
    charsets = [Charset("kCp932", "CP932", 0x40, 0xFC, False),
                Charset("kEucJp", "EUC-JP-MS", 0xA1, 0xFE, True)]
    parts = ["// Generated by gen_japanese_tables.py from glibc iconv's CP932 and EUC-JP-MS; "
             "do not edit.\n// Included by Japanese.cpp inside namespace vcc::detail."]
    for charset in charsets:
        charset.build()
        parts.append(emit(charset))
    with open(path, "w", encoding="utf-8") as f:
        f.write("\n\n".join(parts) + "\n")


if __name__ == "__main__":
    main()
