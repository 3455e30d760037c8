# Configuration of the site that scripts/docs builds.

import os
import sys

sys.path.insert(0, os.path.dirname(__file__))

project = "pistonfield"
author = copyright = ""
html_show_copyright = False
html_show_sphinx = False
version = release = os.environ["PISTONFIELD_VERSION"]

extensions = ["myst_parser", "mathml", "tabs", "sphinx.ext.autodoc", "sphinx.ext.napoleon", "sphinx_copybutton"]
root_doc = "docs/index"
exclude_patterns = ["README.md", "docs/site"]
myst_enable_extensions = ["dollarmath"]
myst_heading_anchors = 4

smartquotes_action = "D"  # dashes only
highlight_language = "none"
html_theme = "furo"
html_title = f"pistonfield {version}"
html_static_path = ["static"]
html_css_files = ["pages.css"]
html_math_renderer = "mathml"
html_copy_source = False
copybutton_selector = ", ".join(f".highlight-{name} pre" for name in ("octave", "python", "default", "sh", "cpp"))
copybutton_prompt_text = ">>> |[.]{3} "
copybutton_prompt_is_regexp = True

# The docstrings of the Python package, which scripts/docs copies to this folder without its compiled part. They
# name the types.
autodoc_mock_imports = ["pistonfield._core"]
autodoc_typehints = "none"
autodoc_preserve_defaults = True
napoleon_google_docstring = False
napoleon_use_param = False
napoleon_use_rtype = False
napoleon_preprocess_types = True
add_module_names = False
default_role = "py:obj"
