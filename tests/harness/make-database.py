#!/usr/bin/python3
"""Makes the harness's ODBC data source "ZrTest": a SQLite database with a
small table "people", and the unixODBC files that name it.

    make-database.py FOLDER
"""
import os
import sqlite3
import sys

folder = sys.argv[1]
os.makedirs(folder, exist_ok=True)
db = os.path.join(folder, "test.db")
if os.path.exists(db):
    os.remove(db)
con = sqlite3.connect(db)
con.execute("create table people (name text, age integer, score real)")
con.executemany("insert into people values (?, ?, ?)",
                [("Ada", 36, 12.5), ("Bob", 41, 7.0), ("Cy", 29, 100.25)])
con.commit()
con.close()
with open(os.path.join(folder, "odbcinst.ini"), "w") as f:
    f.write("[SQLite3]\nDriver=/usr/lib/x86_64-linux-gnu/odbc/libsqlite3odbc.so\n")
with open(os.path.join(folder, "odbc.ini"), "w") as f:
    f.write("[ZrTest]\nDriver=SQLite3\nDatabase=%s\n" % db)
