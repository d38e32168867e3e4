"""What the package warns of."""
from __future__ import annotations

import sys
import warnings


class SorvoAudioWarning(RuntimeWarning):
    """A result that is computed as asked for, but is hardly what was meant."""


def warn(message: str) -> None:
    """Warns at the line outside of the package that led here."""
    level, frame = 1, sys._getframe()
    while frame.f_back and frame.f_globals.get("__name__", "").startswith(f"{__package__}."):
        level, frame = level + 1, frame.f_back
    warnings.warn(message, SorvoAudioWarning, stacklevel=level)
