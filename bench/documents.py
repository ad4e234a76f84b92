"""The large texts that reading and writing pages is measured on, and the peer's time over them."""

import glob
import os
import resource
import subprocess

LARGE_BYTES = 10_000_000
_PEER = ("cmark-gfm", "-e", "table", "-e", "strikethrough", "-e", "tasklist", "-t", "html")
_END = b"\n\nThe end of all.\n"

# What is measured on where the files of the world aren't at hand.
_OWN = b"""# A page of *many* kinds

Some words, **bold** and _slanted_, with `code`, a [link](https://example.org/a "title") and ~~nothing~~ more.
They go on in a second line\\
and in a third.

- an item
- another, with a list
  1. one
  2. two
- [ ] a task

> Said by somebody, who knew
> what it was about.

```c
int main(void) { return 0; }
```

| What | How many |
| :--- | -------: |
| `a`  |      1   |

---

"""


def large_markdown(data, say):
    def make():
        unit = _corpus() or _OWN
        if unit is _OWN:
            say("  The Markdown files of the world aren't at hand (CORVELLE_SHARED): measured on a text of our own.")
        return unit * (LARGE_BYTES // len(unit) + 1)
    return _made(data, "large.md", make)


def large_html(data, say):
    markdown = large_markdown(data, say)
    return _made(data, "large.html", lambda: subprocess.run([*_PEER, "--unsafe", markdown], check=True, stdout=subprocess.PIPE).stdout)


def rendering_ms(markdown):
    """The processor's time that the peer takes to parse and render."""
    def taken():
        usage = resource.getrusage(resource.RUSAGE_CHILDREN)
        return usage.ru_utime + usage.ru_stime
    start = taken()
    subprocess.run([*_PEER, markdown], check=True, stdout=subprocess.DEVNULL)
    return (taken() - start) * 1000


def _corpus():
    here = os.path.dirname(os.path.abspath(__file__))
    corpus = os.path.join(os.environ.get("CORVELLE_SHARED", os.path.join(here, "..", "..", "shared")), "corpus")
    paths = glob.glob(os.path.join(corpus, "md", "*.md")) + glob.glob(os.path.join(corpus, "md-spec", "*.txt"))
    texts = []
    for path in sorted(paths):
        if not path.endswith(".expected.md"):
            with open(path, "rb") as file:
                texts.append(file.read() + _END)
    return b"\n".join(text for text in texts if _is_closed(text))


def _is_closed(text):
    """Whether a paragraph at its end is one. Code that is left open would swallow every text behind it."""
    html = subprocess.run(_PEER, input=text, check=True, stdout=subprocess.PIPE).stdout
    return html.endswith(b"<p>" + _END.strip() + b"</p>\n")


def _made(data, name, make):
    path = os.path.join(data, name)
    if not os.path.exists(path):
        with open(path + ".part", "wb") as file:
            file.write(make())
        os.replace(path + ".part", path)
    return path


def long_page(blocks=20_000):
    """A stored page of many kinds of blocks."""
    words = "the quick brown fox jumps over a lazy dog while seven wizards make toxic brew".split()

    def text(number, count):
        return {"type": "text", "text": " ".join(words[(number * 7 + i * i) % len(words)] for i in range(count))}

    content = []
    for number in range(blocks):
        paragraph = {"type": "paragraph", "content": [text(number, 5 + number * 13 % 55)]}
        if number % 10 == 0:
            content.append({"type": "heading", "attrs": {"level": 2}, "content": [text(number, 4)]})
        elif number % 10 == 3:
            code = "\n".join(f"x{line} = {line}  # a line" for line in range(6))
            content.append({"type": "codeBlock", "attrs": {"language": "python"}, "content": [{"type": "text", "text": code}]})
        elif number % 10 == 5:
            content.append({"type": "blockquote", "content": [paragraph]})
        elif number % 10 == 7:
            content.append({"type": "bulletList", "content": [{"type": "listItem", "content": [paragraph]}]})
        else:
            bold = {"type": "text", "text": " in bold", "marks": [{"type": "bold"}]}
            content.append({"type": "paragraph", "content": [*paragraph["content"], bold]})
    return {"type": "doc", "content": content}
