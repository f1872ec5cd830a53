"""pytest plugin: the ``tessarine_sim`` fixture, a simulated receiver per test.

The package registers it (entry point ``pytest11``), so installing the
package, or putting it on PYTHONPATH, is enough.
"""

from __future__ import annotations

import pytest

from ._tessarine import Client
from .simulator import Simulator, SimulatorError

_SIMULATOR = pytest.StashKey[Simulator]()


def pytest_addoption(parser):
    parser.getgroup("tessarine").addoption(
        "--tessarine-sim",
        metavar="PATH",
        help="tessarine-sim to run (default: $TESSARINE_SIM, the one built or installed with the package, PATH)",
    )


def pytest_configure(config):
    config.addinivalue_line(
        "markers",
        "tessarine_sim(scenario=None, ts=None, ts_pace=None, timeout=5.0): what the tessarine_sim fixture runs: "
        "a scenario file (relative to the test file) or dict, a transport stream, the client's time limit",
    )


@pytest.fixture
def tessarine_sim(request):
    """A running tessarine-sim with a connected ``client``; stopped after the test.

    Its exit status must be 0 (unless the test killed it); its log is attached
    to the report of a failing test.
    """
    marker = request.node.get_closest_marker("tessarine_sim")
    options = dict(marker.kwargs) if marker else {}
    timeout = options.pop("timeout", 5.0)
    simulator = Simulator(
        executable=request.config.getoption("tessarine_sim"), base_dir=request.path.parent, **options
    )
    request.node.stash[_SIMULATOR] = simulator
    simulator.client = None
    try:
        simulator.start()
        simulator.client = Client(socket_dir=simulator.socket_dir, timeout=timeout)
        simulator.client.connect()
        # connect() returns once the kernel took the connection; events and
        # application-state requests reach the client once the bridge has it.
        if simulator.command("waitclient") != "client connected":
            raise SimulatorError("the bridge did not see the client connect")
        yield simulator
    finally:
        if simulator.client is not None:
            simulator.client.close()
        status = simulator.stop()
    if status != 0 and not simulator.killed:
        pytest.fail(f"tessarine-sim exited with {status}", pytrace=False)


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    outcome = yield
    report = outcome.get_result()
    simulator = item.stash.get(_SIMULATOR, None)
    if simulator is not None and report.failed:
        report.sections.append(("tessarine-sim log", simulator.log()))
