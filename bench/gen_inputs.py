#!/usr/bin/env python3
"""Writes the benchmark inputs into a folder, the same bytes on every run (nothing is downloaded).

usage: gen_inputs.py OUT_DIR [--mb 20]

Each document is about --mb megabytes. The document with errors is also written at a quarter
and at half that size, to show how its time grows with the number of errors; inputs 8 and 9 are
1 and 5 with one error just before the root's end tag.
"""
import argparse
import os


class Lcg:
    """A fixed pseudo-random sequence of our own, so that no library update alters the inputs."""

    def __init__(self, seed):
        self.state = seed

    def next(self, bound):
        self.state = (self.state * 6364136223846793005 + 1442695040888963407) % (1 << 64)
        return (self.state >> 33) % bound

    def pick(self, items):
        return items[self.next(len(items))]


WORDS = ("the quick brown fox jumps over a lazy dog while parsers read documents of every "
         "size and shape from disk memory network and archive records with names dates "
         "amounts cities notes tags and long paragraphs of plain text").split()
FIRST = ["Anna", "Bruno", "Chloé", "David", "Emma", "François", "Greta", "Hugo", "Ines",
         "José", "Karl", "Lena", "Mika", "Nora", "Oskar", "Søren", "Zoë"]
LAST = ["Smith", "Müller", "Rossi", "García", "Dubois", "Novak", "Jensen", "Kowalski",
        "Silva", "Weber", "Moreau", "Berg"]
CITIES = ["Berlin", "Paris", "Madrid", "Roma", "Wien", "Praha", "Oslo", "Lisboa", "Zürich"]
STATUS = ["active", "closed", "pending", "archived"]
COLORS = ["red", "green", "blue", "black", "white", "silver"]
SIZES = ["XS", "S", "M", "L", "XL"]

# Only characters of JIS X 0208, which every Shift_JIS reader decodes alike.
JA_FIRST = ["太郎", "花子", "一郎", "美咲", "健太", "陽子", "翔", "さくら", "大輔", "愛"]
JA_LAST = ["山田", "佐藤", "鈴木", "高橋", "田中", "伊藤", "渡辺", "中村", "小林", "加藤"]
JA_CITIES = ["東京都千代田区", "大阪府大阪市北区", "京都府京都市左京区", "北海道札幌市中央区",
             "福岡県福岡市博多区", "愛知県名古屋市中区", "神奈川県横浜市西区"]
JA_STATUS = ["有効", "完了", "保留", "保管"]
JA_TAGS = ["重要", "新規", "継続", "至急", "確認済み", "要連絡"]
JA_NOTE = "ご注文の商品は予定通り発送いたしました。到着まで今しばらくお待ちください。"


def fill(target, encoding, header, footer, item):
    """header, item(0), item(1), ... while under target bytes, then footer; encoded."""
    parts = [header.encode(encoding)]
    tail = footer.encode(encoding)
    size = len(parts[0]) + len(tail)
    i = 0
    while size < target:
        data = item(i).encode(encoding)
        parts.append(data)
        size += len(data)
        i += 1
    parts.append(tail)
    return b"".join(parts)


def utf8_doc(target, root, item, doctype=""):
    return fill(target, "utf-8", f'<?xml version="1.0" encoding="UTF-8"?>\n{doctype}<{root}>\n',
                f"</{root}>\n", item)


def sentence(rng, words):
    text = " ".join(rng.pick(WORDS) for _ in range(words))
    return text[0].upper() + text[1:] + "."


def records(target):
    """Many small elements and attributes."""
    rng = Lcg(1)

    def record(i):
        return (f'  <record id="{i}" status="{rng.pick(STATUS)}" priority="{rng.next(5)}">\n'
                f'    <name first="{rng.pick(FIRST)}" last="{rng.pick(LAST)}"/>\n'
                f'    <email>user{rng.next(100000)}@example.com</email>\n'
                f'    <city code="C{rng.next(100)}">{rng.pick(CITIES)}</city>\n'
                f'    <amount currency="EUR">{rng.next(10000)}.{rng.next(100):02d}</amount>\n'
                f'    <date>2024-{1 + rng.next(12):02d}-{1 + rng.next(28):02d}</date>\n'
                f'    <tags><tag>{rng.pick(WORDS)}</tag><tag>{rng.pick(WORDS)}</tag></tags>\n'
                '  </record>\n')

    return utf8_doc(target, "records", record)


def records_sjis(target):
    """The same shape with Japanese names and text, in Shift_JIS."""
    rng = Lcg(2)

    def record(i):
        return (f'  <顧客 番号="{i}" 状態="{rng.pick(JA_STATUS)}" 優先度="{rng.next(5)}">\n'
                f'    <氏名 姓="{rng.pick(JA_LAST)}" 名="{rng.pick(JA_FIRST)}"/>\n'
                f'    <メール>user{rng.next(100000)}@example.jp</メール>\n'
                f'    <住所 郵便番号="{100 + rng.next(900)}-{rng.next(10000):04d}">'
                f'{rng.pick(JA_CITIES)}{1 + rng.next(9)}丁目</住所>\n'
                f'    <金額 通貨="円">{rng.next(1000000)}</金額>\n'
                f'    <日付>2024年{1 + rng.next(12)}月{1 + rng.next(28)}日</日付>\n'
                f'    <備考>{JA_NOTE}</備考>\n'
                f'    <分類><区分>{rng.pick(JA_TAGS)}</区分><区分>{rng.pick(JA_TAGS)}</区分></分類>\n'
                '  </顧客>\n')

    return fill(target, "shift_jis", '<?xml version="1.0" encoding="Shift_JIS"?>\n<顧客一覧>\n',
                "</顧客一覧>\n", record)


def text_heavy(target):
    """Long character data and CDATA sections."""
    rng = Lcg(3)

    def article(i):
        paras = "".join(
            "    <para>" + " ".join(sentence(rng, 8 + rng.next(20)) for _ in range(20 + rng.next(40)))
            + "</para>\n" for _ in range(2 + rng.next(4)))
        code = "\n".join(f"if (count{k} < limit && flags & 0x{rng.next(256):02x}) {{ total += "
                         f"count{k}; }} // {sentence(rng, 6)}" for k in range(10 + rng.next(30)))
        return (f'  <article id="a{i}" lang="en">\n'
                f"    <title>{sentence(rng, 6)}</title>\n{paras}"
                f"    <code><![CDATA[\n{code}\n]]></code>\n  </article>\n")

    return utf8_doc(target, "library", article)


def attribute_heavy(target):
    """Empty elements with many attributes, some values repeating and some unique."""
    rng = Lcg(4)

    def item(i):
        return (f'  <item id="{i}" sku="SKU-{rng.next(1000000):06d}" name="{rng.pick(WORDS)} '
                f'{rng.pick(WORDS)}" color="{rng.pick(COLORS)}" size="{rng.pick(SIZES)}" '
                f'weight="{rng.next(100)}.{rng.next(100):02d}" price="{rng.next(500)}.{rng.next(100):02d}" '
                f'currency="EUR" stock="{rng.next(1000)}" warehouse="W{rng.next(20)}" '
                f'supplier="{rng.pick(LAST)} GmbH" created="2023-{1 + rng.next(12):02d}-'
                f'{1 + rng.next(28):02d}" updated="2024-{1 + rng.next(12):02d}-{1 + rng.next(28):02d}" '
                f'status="{rng.pick(STATUS)}" rating="{1 + rng.next(5)}"/>\n')

    return utf8_doc(target, "catalog", item)


def references(target):
    """Dense references, in text and in attribute values: the predefined entities, character
    references, and two general entities of a small internal DTD."""
    rng = Lcg(5)
    doctype = ('<!DOCTYPE entries [\n  <!ENTITY corp "Example Corporation">\n'
               '  <!ENTITY sign "&#169; 2024">\n]>\n')

    def entry(i):
        return (f'  <entry key="k{i} &amp; {rng.pick(WORDS)}" note="&lt;b&gt; &quot;{rng.pick(WORDS)}'
                f'&quot; &corp;">Fish &amp; chips &lt; {rng.next(100)} &gt; 3 &quot;quoted&quot; '
                f"&apos;single&apos; caf&#233; &#x3042;&#x3044;&#x3046; &sign; &corp; "
                f"20{rng.next(100):02d} &#8364;{rng.next(1000)} a&#x2192;b &lt;tag&gt;</entry>\n")

    return utf8_doc(target, "entries", entry, doctype)


DEPTH = 500  # within the default nesting limit of 1000


def deep(target):
    """Subtrees nested DEPTH elements deep, one after the other."""
    rng = Lcg(6)

    def subtree(i):
        opening = "".join(f'<n d="{k}">{rng.pick(WORDS)}' for k in range(DEPTH))
        return f'  <tree id="{i}">{opening}{"</n>" * DEPTH}</tree>\n'

    return utf8_doc(target, "forest", subtree)


def errors(target):
    """One well-formedness error on every line: a record whose end tag does not match."""
    rng = Lcg(7)

    def line(i):
        return f'  <row id="{i}"><value>{rng.pick(WORDS)}</valeu></row>\n'

    return utf8_doc(target, "rows", line)


def error_at_end(make):
    """The document of make with one error just before the root's end tag (a duplicate
    attribute): a reader that stops there has read nearly all of it."""

    def made(target):
        text = make(target)
        end = text.rindex(b"</")
        return text[:end] + b'<bad a="1" a="2"/>' + text[end:]

    return made


INPUTS = [
    ("1-records-utf8", records),
    ("2-records-sjis", records_sjis),
    ("3-text-cdata", text_heavy),
    ("4-attributes", attribute_heavy),
    ("5-references", references),
    ("6-deep", deep),
    ("7-errors", errors),
    ("8-records-error-at-end", error_at_end(records)),
    ("9-references-error-at-end", error_at_end(references)),
]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("out_dir")
    parser.add_argument("--mb", type=float, default=20)
    args = parser.parse_args()
    os.makedirs(args.out_dir, exist_ok=True)
    target = int(args.mb * 1_000_000)
    jobs = [(name, make, target) for name, make in INPUTS]
    jobs += [(f"7-errors-{part}", errors, target // div) for part, div in (("quarter", 4), ("half", 2))]
    for name, make, size in jobs:
        path = os.path.join(args.out_dir, name + ".xml")
        with open(path, "wb") as out:
            out.write(make(size))
        print(f"{path}: {os.path.getsize(path) / 1e6:.1f} MB")


if __name__ == "__main__":
    main()
