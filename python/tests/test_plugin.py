"""The tessarine_sim fixture's clean-up."""

import os

import pytest


def test_a_failing_test_gets_the_log_and_leaves_nothing_running(pytester):
    pytester.makepyfile("""
        def test_fails(tessarine_sim):
            tessarine_sim.command("dsmcc 1 2 0 before the failure")
            print(tessarine_sim.socket_dir, tessarine_sim.process.pid, file=open("left.txt", "w"))
            assert False
    """)
    result = pytester.runpytest()
    result.assert_outcomes(failed=1)
    result.stdout.fnmatch_lines(["*tessarine-sim log*", '*nclEditingCommand*"before the failure"*'])
    directory, pid = (pytester.path / "left.txt").read_text().split()
    assert not os.path.exists(directory)
    with pytest.raises(ProcessLookupError):
        os.kill(int(pid), 0)
