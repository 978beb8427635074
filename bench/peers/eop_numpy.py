#!/usr/bin/python3
"""The exterior orientation of a flight's takes as a user would script it
with NumPy and pyproj: read the SBET file, interpolate its records at the
IMU rate over each take, transform the positions to the take's topocentric
system and build the rotations batched. Prints what it made and how long
the generation took in CPU time (the SBET file read once, outside the timing, as the
library's benchmark opens it once).

    eop_numpy.py <spans.json>

spans.json: {"sbet": path, "misalignmentRad": [m0, m1, m2], "zOffsetM": z,
             "intervalSec": dt,
             "takes": [{"startSec", "endSec", "anchorLonRad", "anchorLatRad"}]}
"""
import json
import sys
import time

import numpy as np
import pyproj


def rx(a):
    c, s = np.cos(a), np.sin(a)
    r = np.zeros(a.shape + (3, 3))
    r[..., 0, 0] = 1.0
    r[..., 1, 1], r[..., 1, 2], r[..., 2, 1], r[..., 2, 2] = c, -s, s, c
    return r


def ry(a):
    c, s = np.cos(a), np.sin(a)
    r = np.zeros(a.shape + (3, 3))
    r[..., 1, 1] = 1.0
    r[..., 0, 0], r[..., 0, 2], r[..., 2, 0], r[..., 2, 2] = c, s, -s, c
    return r


def rz(a):
    c, s = np.cos(a), np.sin(a)
    r = np.zeros(a.shape + (3, 3))
    r[..., 2, 2] = 1.0
    r[..., 0, 0], r[..., 0, 1], r[..., 1, 0], r[..., 1, 1] = c, -s, s, c
    return r


def local_level(lat, lon):
    return rz(lon + np.pi / 2) @ rx(np.pi / 2 - lat)


def main():
    spans = json.load(open(sys.argv[1]))
    records = np.fromfile(spans["sbet"], dtype="<f8")
    records = records[: records.size // 17 * 17].reshape(-1, 17)
    t = records[:, 0]
    lat, lon, height = records[:, 1], records[:, 2], records[:, 3]
    roll, pitch = records[:, 7], records[:, 8]
    heading = np.unwrap(records[:, 9] - records[:, 10])
    m = np.array(spans["misalignmentRad"], dtype=float)
    body_from_camera = rx(m[0:1])[0] @ ry(m[1:2])[0] @ rz(m[2:3])[0]
    dt = spans["intervalSec"]

    samples = 0
    start = time.process_time()
    for take in spans["takes"]:
        times = take["startSec"] + dt * np.arange(int(np.floor((take["endSec"] - take["startSec"]) / dt)) + 1)
        la, lo, h = np.interp(times, t, lat), np.interp(times, t, lon), np.interp(times, t, height)
        r, p, k = np.interp(times, t, roll), np.interp(times, t, pitch), np.interp(times, t, heading)
        a_lat, a_lon = take["anchorLatRad"], take["anchorLonRad"]
        lsr = pyproj.Transformer.from_pipeline(
            "+proj=pipeline +step +proj=unitconvert +xy_in=deg +xy_out=rad +step +proj=cart +ellps=WGS84"
            f" +step +proj=topocentric +ellps=WGS84 +lon_0={np.degrees(a_lon)!r} +lat_0={np.degrees(a_lat)!r} +h_0=0")
        x, y, z = lsr.transform(np.degrees(lo), np.degrees(la), h)
        z = z - spans["zOffsetM"]
        anchor = local_level(np.array([a_lat]), np.array([a_lon]))[0].T
        rot = (anchor @ local_level(la, lo) @ rz(np.array([np.pi / 2]))[0] @ rz(-k) @ ry(-p) @ rx(r)
               @ body_from_camera)
        mt = np.swapaxes(rot, -1, -2)
        phi = np.arcsin(mt[:, 2, 0])
        c = np.cos(phi)
        omega = np.arctan2(-mt[:, 2, 1] / c, mt[:, 2, 2] / c)
        kappa = np.arctan2(-mt[:, 1, 0] / c, mt[:, 0, 0] / c)
        ha, hb, hg = -omega / 2, -phi / 2, -kappa / 2
        q = np.stack([np.cos(ha) * np.cos(hb) * np.cos(hg) + np.sin(ha) * np.sin(hb) * np.sin(hg),
                      np.sin(ha) * np.cos(hb) * np.cos(hg) - np.cos(ha) * np.sin(hb) * np.sin(hg),
                      np.sin(ha) * np.cos(hb) * np.sin(hg) + np.cos(ha) * np.sin(hb) * np.cos(hg),
                      np.cos(ha) * np.cos(hb) * np.sin(hg) - np.sin(ha) * np.sin(hb) * np.cos(hg)],
                     axis=1).astype(np.float32)
        samples += times.size
    elapsed = time.process_time() - start
    print(json.dumps({"samples": samples, "seconds": elapsed}))


if __name__ == "__main__":
    main()
