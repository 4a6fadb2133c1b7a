"""Memory that cannot be had: scripts/faults takes every place of a lesson, here are those of the start."""

import pytest
from harness import executable


def start_without(programs, which):
    return programs.run("tarnlyd", "--no-advertise", "--data-dir", programs.new_folder(),
                        LD_PRELOAD=executable("libtarnly_faults.so"), TARNLY_FAULT=f"malloc:{which}:errno=12")


@pytest.mark.parametrize("number", [1, 10, 100, 200, 300])
def test_a_start_without_memory_says_so(programs, number):
    ended = start_without(programs, f"{number}-{number + 20}")
    assert ended.status == 1 and ended.error_lines == ["Failed to start: std::bad_alloc"], ended
