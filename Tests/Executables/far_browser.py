"""far_browser HOST PORT [PASSWORD]: a device on another computer opens the page, or with a PASSWORD tries to pair.

Prints the status of the answer, or whether it has paired.
"""

import http.client
import sys

from client import Client


def open_page(host, port):
    connection = http.client.HTTPConnection(host, port, timeout=60)
    connection.request("GET", "/")
    print(connection.getresponse().status)


def pair(host, port, password):
    print(Client(port, host=host).request("pair", {"password": password})["data"]["accepted"])


(pair if len(sys.argv) > 3 else open_page)(sys.argv[1], int(sys.argv[2]), *sys.argv[3:])
