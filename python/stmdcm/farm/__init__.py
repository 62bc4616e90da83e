"""What `stmdcm check` and `stmdcm show` tell of one capture, of a hundred thousand: `python3 -m stmdcm.farm --help`.

Captures go to worker processes of Dask's distributed scheduler in batches; this process alone writes what comes back
(docs/farm.md).
"""
