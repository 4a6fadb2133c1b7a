"""What the schemas of GPX 1.1 and KML 2.2 say of the order of elements, for those that exports may have."""

GPX = "{http://www.topografix.com/GPX/1/1}"
KML = "{http://www.opengis.net/kml/2.2}"

_POINT = "ele time magvar geoidheight name cmt desc src link sym type fix sat hdop vdop pdop ageofdgpsdata dgpsid extensions"
_FEATURE = ("name visibility open author link address phoneNumber Snippet description AbstractView TimeStamp TimeSpan "
            "styleUrl Style StyleMap Region ExtendedData")
_GEOMETRY = "Point LineString LinearRing Polygon MultiGeometry Model"

# The children of each element, in the only order that there is.
ORDER = {
    GPX: {
        "gpx": "metadata wpt rte trk extensions",
        "metadata": "name desc author copyright link time keywords bounds extensions",
        "trk": "name cmt desc src link number type extensions trkseg",
        "trkseg": "trkpt extensions",
        "wpt": _POINT,
        "trkpt": _POINT,
    },
    KML: {
        "kml": "NetworkLinkControl Document",
        "Document": f"{_FEATURE} Schema Placemark",
        "Placemark": f"{_FEATURE} {_GEOMETRY}",
        "Style": "IconStyle LabelStyle LineStyle PolyStyle BalloonStyle ListStyle",
        "LineStyle": "color colorMode width",
        "PolyStyle": "color colorMode fill outline",
        "TimeSpan": "begin end",
        "TimeStamp": "when",
        "MultiGeometry": "LineString",
        "LineString": "extrude tessellate altitudeMode coordinates",
        "Point": "extrude altitudeMode coordinates",
    },
}
# May stand there more than once.
REPEATED = {"wpt", "rte", "trk", "trkseg", "trkpt", "link", "Style", "Schema", "Placemark", "LineString"}


def misplaced(root, namespace):
    """Each element that the schema does not have, or has elsewhere, as "parent/child"."""
    found = []
    for parent in root.iter():
        name = parent.tag.removeprefix(namespace)
        allowed = ORDER[namespace].get(name, "").split()
        reached = -1
        for child in parent:
            child_name = child.tag.removeprefix(namespace)
            place = allowed.index(child_name) if child_name in allowed else -1
            if place < reached or place == -1 or (place == reached and child_name not in REPEATED):
                found.append(f"{name}/{child_name}")
            reached = max(place, reached)
    return found
