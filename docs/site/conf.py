# Configuration of the site that scripts/docs builds.

import os
import sys

sys.path.insert(0, os.path.dirname(__file__))

project = "pistonfield"
author = copyright = ""
html_show_copyright = False
html_show_sphinx = False
version = release = os.environ["PISTONFIELD_VERSION"]

extensions = ["myst_parser", "mathml", "sphinx_copybutton"]
root_doc = "docs/index"
exclude_patterns = ["README.md", "docs/site"]
myst_enable_extensions = ["dollarmath"]
myst_heading_anchors = 4

smartquotes = False
highlight_language = "none"
html_theme = "furo"
html_title = f"pistonfield {version}"
html_static_path = ["static"]
html_css_files = ["pages.css"]
html_math_renderer = "mathml"
html_copy_source = False
copybutton_selector = ".highlight-octave pre, .highlight-sh pre, .highlight-cpp pre"
