"""The tessarine module against a simulated receiver (the tessarine_sim fixture)."""

import queue
import re
import sys
import threading

import pytest

import tessarine
from tessarine import (AppStateRequest, Descriptor, DownloadComplete, DsmccCommand, EndOfMedia, GraphicsSettings,
                       Rectangle, Service)

# No timeline, so that the only events are the ones a test asks for.
QUIET = pytest.mark.tessarine_sim(scenario={"media": [{"locator": "file:///a.ts", "duration": 60000}],
                                            "si": {"serviceDescription": "from another thread"}})


@pytest.mark.parametrize("call, expected", [
    (lambda c, sim: c.check_version(1), 1),
    (lambda c, sim: (c.set_video_bounds(10, 20, 640, 360), c.video_bounds())[1], Rectangle(10, 20, 640, 360)),
    (lambda c, sim: c.video_languages(), ["por", "eng", "spa"]),
    (lambda c, sim: (c.set_system_property("app.x", "1"), c.system_property("app.x"))[1], "1"),
    (lambda c, sim: c.system_property("no.such"), None),
    (lambda c, sim: (c.set_mute(True), sim.wait_for_log(r"request audio 4 (\w+)").group(1))[1], "mute"),
    (lambda c, sim: c.tuner_ids(2, 0), [1, 2, 3]),
    (lambda c, sim: c.mount_carousel("dsmcc://1089/1/10"), "/carousel/1089/1/10"),
    (lambda c, sim: c.media_duration(c.open_media("file:///media/intro.mp4")), 5000),
    (lambda c, sim: c.open_media("file:///nowhere"), None),
    (lambda c, sim: c.services()[1], Service(2, 1, 1089, 1, 4, "Tessarine News")),
    (lambda c, sim: (c.program_event().bytes0, c.program_event().strings0), (b"por", ["news", "live"])),
    (lambda c, sim: c.network_descriptors(), [Descriptor(64, b"Tessarine")]),
    (lambda c, sim: c.raw(10, 1)[0].bytes[12], 1),
])
def test_round_trip(tessarine_sim, call, expected):
    assert call(tessarine_sim.client, tessarine_sim) == expected


@pytest.mark.tessarine_sim(ts="../../tests/data/broadcast.ts", ts_pace="none")
def test_sections_from_a_transport_stream(tessarine_sim):
    with tessarine.DemuxClient(socket_dir=tessarine_sim.socket_dir) as demux:
        demux.set_pid(0x11), demux.set_table_id(0x42), demux.set_time_out(5000), demux.start()
        section = demux.read_section(timeout=10)
    assert section[0] == 0x42 and b"Tessarine One" in section


@QUIET
@pytest.mark.parametrize("prepare, command, expected", [
    (None, "dsmcc 5 99 1 hello world", DsmccCommand(5, 99, 1, "hello world")),
    (None, "graphics 0 0 1280 720 0 0 1920 1080", GraphicsSettings(Rectangle(0, 0, 1280, 720),
                                                                     Rectangle(0, 0, 1920, 1080))),
    (lambda c: c.add_carousel_listener(), "download /c/main.ncl done", DownloadComplete("/c/main.ncl", "done")),
    (lambda c: c.add_media_listener(c.open_media("file:///a.ts")), "eom 1", EndOfMedia(1)),
])
def test_event_reaches_callback_and_iterator(tessarine_sim, prepare, command, expected):
    client, seen = tessarine_sim.client, queue.Queue()
    getattr(client, "on_" + re.sub(r"(?<!^)(?=[A-Z])", "_", type(expected).__name__).lower())(seen.put)
    if prepare:
        prepare(client)
        client.check_version(1)  # answered once the bridge has handled the unanswered commands before it
    tessarine_sim.command(command)
    assert seen.get(timeout=5) == expected
    assert next(client.events(timeout=5)) == expected


@QUIET
@pytest.mark.parametrize("callback, answer, reported", [
    (lambda state: state + 4, 7, None),
    (None, 0, None),
    (lambda state: 1 / 0, 0, ZeroDivisionError),
    (lambda state: 256, 0, ValueError),
])
def test_app_state_answer_and_a_callback_that_raises(tessarine_sim, callback, answer, reported):
    hooked = []
    with pytest.MonkeyPatch.context() as patch:
        patch.setattr(sys, "unraisablehook", hooked.append)
        tessarine_sim.client.on_app_state_request(callback)
        # The second request shows the event thread outlived the first.
        assert [tessarine_sim.app_state(3), tessarine_sim.app_state(3)] == [answer, answer]
    assert [type(h.exc_value) for h in hooked] == ([reported] * 2 if reported else [])
    assert next(tessarine_sim.client.events(timeout=5)) == AppStateRequest(3, answer)


def kill_mid_call(sim):
    sim.pause()
    threading.Timer(0.3, sim.kill).start()
    return sim.client.services(timeout=10)


@pytest.mark.parametrize("call, kind, message", [
    (lambda sim: tessarine.Client(socket=sim.socket_dir + "/none").services(), tessarine.NotConnected, "not connected"),
    (lambda sim: (sim.pause(), sim.client.services(timeout=0.3)), tessarine.TimedOut, "timed out"),
    (kill_mid_call, tessarine.ConnectionLost, "connection lost"),
    (lambda sim: sim.client.set_video_text("x" * 255), tessarine.InvalidArgument, "invalid argument"),
])
def test_failures_raise_their_kind(tessarine_sim, call, kind, message):
    with pytest.raises(kind, match=f"^{message}: ") as raised:
        call(tessarine_sim)
    assert isinstance(raised.value, tessarine.Error)


@QUIET
def test_blocking_calls_let_other_python_threads_use_the_client(tessarine_sim):
    sim, client = tessarine_sim, tessarine_sim.client
    sim.pause()
    threading.Timer(0.2, sim.resume).start()
    assert client.services(timeout=5) == []  # answered only because the timer's thread ran meanwhile
    threading.Timer(0.2, lambda: sim.command("dsmcc 9 0 0 " + client.service_description())).start()
    assert next(client.events(timeout=5)) == DsmccCommand(9, 0, 0, "from another thread")
