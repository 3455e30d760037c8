"""Adjacent code blocks of different languages as tabs. In the pages themselves they follow each other."""

from docutils import nodes
from sphinx.transforms.post_transforms import SphinxPostTransform

NAMES = {"octave": "MATLAB, Octave", "python": "Python", "cpp": "C++"}


def adjacent(first):
    """Returns this block and those that follow it directly, each in a language of its own, by language."""
    blocks = {}
    for node in first.findall(descend=False, siblings=True):
        language = node.get("language")
        if not isinstance(node, nodes.literal_block) or language not in NAMES or language in blocks:
            break
        blocks[language] = node
    return blocks


class Tabs(SphinxPostTransform):
    default_priority = 500
    formats = ["html"]

    def run(self, **kwargs):
        for number, first in enumerate(list(self.document.findall(nodes.literal_block))):
            blocks = adjacent(first)
            if len(blocks) < 2:
                continue
            tabs = nodes.container(classes=["tabs"])
            first.parent.insert(first.parent.index(first), tabs)
            for language, block in blocks.items():
                block.parent.remove(block)
                button = (f'<input type="radio" name="tabs-{number}" id="tabs-{number}-{language}" value="{language}"'
                          f'{"" if tabs.children else " checked"}>'
                          f'<label for="tabs-{number}-{language}">{NAMES[language]}</label>')
                tabs += [nodes.raw("", button, format="html"), block]


def setup(app):
    app.add_post_transform(Tabs)
    app.add_js_file("tabs.js")
    return {"parallel_read_safe": True, "parallel_write_safe": True}
