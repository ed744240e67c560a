"""What can go wrong with which calls."""

import errno

PATH_ERRORS = "EACCES EPERM EIO ENOENT ENOTDIR ENAMETOOLONG ELOOP ENOMEM"
CHANGE_ERRORS = "EACCES EPERM EROFS EBUSY EIO"
# With a "+", all calls from that one on fail. Reading does not: no pipe fails for good.
ERRORS = {
    "open": f"{PATH_ERRORS} EMFILE ENOSPC EDQUOT EROFS EINTR EBUSY EMFILE+ EIO+",
    "read": "EIO EINTR EAGAIN ENOMEM short",
    "write": "ENOSPC EIO EDQUOT EINTR EAGAIN short ENOSPC+",
    "stat": f"{PATH_ERRORS} EIO+",
    "mkdir": f"{PATH_ERRORS} ENOSPC EDQUOT EROFS EROFS+",
    "unlink": f"{CHANGE_ERRORS} EROFS+",
    "rmdir": f"{CHANGE_ERRORS} EROFS+",
    "rename": f"{CHANGE_ERRORS} ENOENT ENOSPC EDQUOT ENOTDIR EROFS+",
    "link": f"{CHANGE_ERRORS} ENOSPC EDQUOT",
    "readdir": "EIO ENOENT ENOMEM EIO+",
    "ioctl": "EIO EBUSY EACCES ENOMEM EINTR EIO+",
    "close": "EIO EINTR ENOSPC EDQUOT EIO+",
    "chmod": "EPERM EROFS EIO EACCES ENOENT EPERM+",
    "utimensat": "EPERM EROFS EIO EACCES ENOENT EPERM+",
    "alloc": "ENOMEM",
    "thread": "EAGAIN EAGAIN+",
    "eventfd": "EMFILE ENOMEM EMFILE+",
    "fork": "EAGAIN ENOMEM EAGAIN+",
    "sync": "EIO ENOSPC EDQUOT EINTR",
    "wait": "EINTR ENOMEM",
    # A stream for a descriptor that is open already.
    "stream": "ENOMEM",
    # To standard output and standard error.
    "print": "ENOSPC EIO EINTR EAGAIN short ENOSPC+",
}
ENDS = {"engine": ("cancel", "SIGKILL"), "program": ("SIGINT", "SIGTERM", "SIGKILL")}
ENDS["terminal"] = ENDS["program"]
SIGNALS = {"SIGINT": 2, "SIGTERM": 15, "SIGKILL": 9}


def effects_of(runner):
    """Pairs of a kind of call and what becomes of one of them."""
    errors = [(kind, effect) for kind, effects in ERRORS.items() for effect in effects.split()]
    if runner == "engine":
        # The program ends where memory stays out, as it says of itself.
        errors.append(("alloc", "ENOMEM+"))
    return errors + [("any", effect) for effect in ENDS[runner]]


def rule(kind, number, effect):
    """As the preloaded library reads it."""
    if effect in SIGNALS:
        return f"{kind} {number} signal {SIGNALS[effect]}"
    if effect in ("short", "cancel"):
        return f"{kind} {number} {effect}"
    name = effect.rstrip("+")
    return f"{kind} {number} {getattr(errno, name)}{effect[len(name):]}"
