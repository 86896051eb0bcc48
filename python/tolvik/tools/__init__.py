# SPDX-License-Identifier: GPL-2.0-or-later
"""Commands on the package: ``tolvik-NAME``, or ``python3 -m tolvik.tools.NAME``."""
