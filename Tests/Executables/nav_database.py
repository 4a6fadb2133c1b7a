"""Small navigation databases."""

import contextlib
import sqlite3


def write_nav_database(path, fixes=(), navaids=()):
    """Writes a database of (identifier, latitude, longitude), and returns its path."""
    with contextlib.closing(sqlite3.connect(path)) as database, database:
        database.execute("CREATE TABLE enroute_fixes (fix_id TEXT, lat REAL, lon REAL)")
        database.execute("CREATE TABLE navaids (nav_id TEXT, lat REAL, lon REAL)")
        database.executemany("INSERT INTO enroute_fixes VALUES (?, ?, ?)", fixes)
        database.executemany("INSERT INTO navaids VALUES (?, ?, ?)", navaids)
    return path
