"""What the parts of tools/torture and the command have in common."""

import dataclasses
import pathlib
import typing


@dataclasses.dataclass
class Row:
    """One line of the table: what was tried how often, and how often everything held."""

    subject: str
    tried: int
    held: int
    note: str = ""


@dataclasses.dataclass
class Context:
    """What a part is run with."""

    size: str
    seed: int
    build: pathlib.Path
    scratch: pathlib.Path
    progress: typing.Callable[[str], None]
    # What a part calls one single case, to repeat it; otherwise empty.
    case: str = ""

    def share(self, quick, ci, whole):
        """The one of three amounts of work that fits the size of the run."""
        return {"quick": quick, "ci": ci, "whole": whole}[self.size]
