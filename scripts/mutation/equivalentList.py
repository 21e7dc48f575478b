"""Reads tests/mutants/equivalent.txt: mutants that change nothing, each with its reason.

    file: function
    - the line as it is
    + the line as it is changed
      the reason

Several + lines share the - line and the reason before and after them.
"""


class ListError(Exception):
    pass


def read_equivalents(path):
    """The reasons by mutant key."""
    reasons = {}
    for block in path.read_text().split("\n\n"):
        lines = [line for line in block.splitlines() if line and not line.startswith("#")]
        if not lines:
            continue
        before = [line[2:] for line in lines if line.startswith("- ")]
        changes = [line[2:] for line in lines if line.startswith("+ ")]
        reason = " ".join(line.strip() for line in lines if line.startswith("  "))
        file, colon, function = lines[0].partition(":")
        if not colon or len(before) != 1 or not changes or not reason:
            raise ListError(f"not an entry:\n{block}")
        for after in changes:
            reasons[(file, function.strip(), before[0], after)] = reason
    return reasons


def check_entries(reasons, mutants):
    """An entry must be exactly one mutant's, so that it hides no other."""
    counts = {}
    for mutant in mutants:
        counts[mutant.key()] = counts.get(mutant.key(), 0) + 1
    for key in reasons:
        if counts.get(key, 0) != 1:
            file, function, before, after = key
            raise ListError(
                f"{counts.get(key, 0)} mutants are\n{file}: {function}\n- {before}\n+ {after}"
            )
