"""What a browser finds at the companion's port."""

import http.client
import re

import pytest


@pytest.fixture(params=[(), ("--no-page",)], ids=["lesson page", "short page"])
def companion(programs, request):
    return programs.companion(*request.param)


def fetch(companion, path="/", method="GET", host=None):
    connection = http.client.HTTPConnection("127.0.0.1", companion.port, timeout=60)
    connection.request(method, path, headers={"Host": host} if host else {})
    response = connection.getresponse()
    body = response.read()
    connection.close()
    return response, body.decode(errors="replace")  # pictures are no text


def test_a_browser_finds_a_page_that_says_what_this_is(companion):
    response, page = fetch(companion)
    assert response.status == 200
    assert response.headers["Content-Type"] == "text/html; charset=utf-8"
    assert response.headers["Connection"] == "close"
    assert "Tarnly" in page and "ws://" in page


def test_the_page_obeys_its_own_policy(companion):
    response, page = fetch(companion)
    policy = response.headers["Content-Security-Policy"]
    assert "script-src 'self'" in policy and "unsafe" not in policy
    assert re.findall(r"<script[^>]*>(.*?)</script>", page, re.DOTALL) == [""]
    assert "<style" not in page and not re.search(r"\son\w+=|\sstyle=", page)


def test_what_the_page_asks_for_is_there(companion):
    _, page = fetch(companion)
    parts = re.findall(r'(?:src|href)="([^"]+)"', page)
    assert len(parts) >= 2
    for part in parts:
        response, _ = fetch(companion, part)
        assert response.status == 200 and response.headers["X-Content-Type-Options"] == "nosniff", part


def test_the_head_alone_will_do(companion):
    response, body = fetch(companion, method="HEAD")
    assert response.status == 200 and body == ""
    assert int(response.headers["Content-Length"]) == len(fetch(companion)[1].encode())


@pytest.mark.parametrize("path, method, status", [
    ("/favicon.ico", "GET", 404), ("/../settings.json", "GET", 404), ("/", "POST", 405), ("/", "DELETE", 405),
])
def test_what_is_not_to_be_had_is_said(companion, path, method, status):
    response, text = fetch(companion, path, method)
    assert response.status == status and len(text.splitlines()) == 1


def test_pages_are_for_who_names_this_computer(companion):
    assert fetch(companion, host=f"localhost:{companion.port}")[0].status == 200
    assert fetch(companion, host="rebound.example")[0].status == 403


def test_who_looks_at_pages_holds_up_no_lesson(companion):
    client = companion.client()
    for _ in range(100):
        assert fetch(companion)[0].status == 200
    assert client.data("sim_info")["sim"] == "xplane"
    assert companion.client().data("sim_info")["sim"] == "xplane"
