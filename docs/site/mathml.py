"""Formulas as MathML, which browsers draw without scripts or a network."""

from docutils import nodes
from docutils.utils.math.latex2mathml import tex2mathml
from sphinx.errors import ExtensionError


def convert(node, inline):
    try:
        return tex2mathml(node.astext(), inline=inline)
    except SyntaxError as error:
        raise ExtensionError(f"{node.source}: {error}: {node.astext()}") from error


def visit_inline(self, node):
    self.body.append(convert(node, True))
    raise nodes.SkipNode


def visit_block(self, node):
    self.body.append('<div class="formula">' + convert(node, False) + "</div>")
    raise nodes.SkipNode


def setup(app):
    app.add_html_math_renderer("mathml", (visit_inline, None), (visit_block, None))
    return {"parallel_read_safe": True, "parallel_write_safe": True}
