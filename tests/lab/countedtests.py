"""Tests of the companion in Python: PROGRAM KRLAB DIRECTORY COUNTS. They run in DIRECTORY; COUNTS gets the numbers of tests
as those of the other test programs."""
import os
import shutil
import sys
import unittest


def krlab():
    return os.path.abspath(sys.argv[1])


def write_counts(file, ran, skipped, failed):
    os.makedirs(os.path.dirname(file), exist_ok=True)
    with open(file, "w", encoding="ascii") as out:
        out.write(f"run {ran} passed {ran - len(skipped) - failed} skipped {len(skipped)} failed {failed}\n")
        out.writelines(f"skipped {name}\n" for name in skipped)


def run(case, missing):
    """Runs a class of tests and returns the exit status; all are skipped by name if something is missing."""
    directory, counts = (os.path.abspath(word) for word in sys.argv[2:4])
    tests = unittest.defaultTestLoader.loadTestsFromTestCase(case)
    if missing:
        names = [f"{case.__name__}.{test._testMethodName}" for test in tests]
        write_counts(counts, len(names), names, 0)
        print(f"not there: {', '.join(missing)}")
        return 77
    shutil.rmtree(directory, ignore_errors=True)
    os.makedirs(directory)
    os.chdir(directory)
    result = unittest.TextTestRunner(verbosity=2 if "-v" in sys.argv else 1).run(tests)
    write_counts(counts, max(result.testsRun, 1), [], len(result.failures) + len(result.errors))
    return 0 if result.wasSuccessful() else 1
