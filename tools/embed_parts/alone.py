"""Compiles the engine with nothing of this project around it."""

import itertools

from embed_parts.running import expect, run

WARNINGS = ["-Wall", "-Wextra", "-Wconversion", "-Wshadow", "-Werror"]
EXPORTING = '-DTARVANE_EXPORT=__attribute__((visibility("default")))'
PUBLIC = ("CollectActiveTarvaneTransferJobSnapshots", "RegisterTarvaneTransferJob",
          "RunTarvaneTransferJob", "TarvaneTransferJob::RequestCancel")


def make_library(compiler, engine, library, *options):
    """A shared library whose code is hidden but for what TARVANE_EXPORT marks. Gives the names."""
    run([compiler, "-std=c++20", "-shared", "-fPIC", "-fvisibility=hidden", *options,
         engine / "tarvanetransfer.cpp", "-o", library])
    names = run(["nm", "--dynamic", "--defined-only", "--demangle", library])
    return [name for name in names.splitlines() if "Tarvane" in name and " std::" not in name]


def link_with_library(compiler, root, scratch):
    engine = root / "engine"
    library = scratch / "libengine.so"
    expect(make_library(compiler, engine, library) == [],
           "a library with hidden visibility exports nothing where TARVANE_EXPORT is empty")
    names = make_library(compiler, engine, library, EXPORTING)
    expect(all(any(public in name for name in names) for public in PUBLIC),
           f"a library exports what TARVANE_EXPORT marks: {names}")
    program = scratch / "linked"
    run([compiler, "-std=c++20", "-pthread", "-I", engine,
         root / "examples/embed/own_functions.cpp", library, f"-Wl,-rpath,{scratch}",
         "-o", program])
    (scratch / "source").write_text("text")
    output = run([program, scratch / "source", scratch / "moved"])
    expect(output == "\aMoved 1 item(s).\n", f"a program works with the library: {output!r}")
    expect((scratch / "moved").read_text() == "text", "a program moves a file with the library")


def compile_all(root, scratch):
    for compiler, standard, option in itertools.product(
            ("g++", "clang++"), ("c++20", "c++23"), ("-frtti", "-fno-rtti")):
        # What clang 14 calls C++23 has its name from before.
        name = "c++2b" if standard == "c++23" else standard
        print(f"engine alone: {compiler} {standard} {option}", flush=True)
        run([compiler, f"-std={name}", option, "-O2", *WARNINGS, "-c",
             root / "engine/tarvanetransfer.cpp", "-o", scratch / "engine.o"])
    for compiler in ("g++", "clang++"):
        print(f"engine in a shared library: {compiler}", flush=True)
        link_with_library(compiler, root, scratch)
