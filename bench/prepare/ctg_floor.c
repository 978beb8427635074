/*
 * The floor for writing a session's CTG files: the least a program can do to
 * produce the same files with the same durability. It reads the time-mark
 * file once, then for every CT file of the session's raw/ folder reads it,
 * converts every scan line's camera time to GPS time by linear interpolation
 * between the marks that bracket it, writes the CTG file beside a temporary
 * name, syncs it (fdatasync) and renames it into place.
 *
 * Built into the prepare benchmark, which runs it and the library's session
 * preparation in the same run; with -DCTG_FLOOR_MAIN it is a program of its
 * own: ctg_floor <session-dir> <tm-file>.
 */
#define _GNU_SOURCE
#include "ctg_floor.h"

#include <dirent.h>
#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

/* Reads the whole file into *data, growing it (and *capacity) as needed. */
static int readAll(const char* path, unsigned char** data, size_t* capacity, size_t* size)
{
    int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return -1;
    struct stat st;
    if (fstat(fd, &st) != 0) {
        close(fd);
        return -1;
    }
    *size = (size_t)st.st_size;
    if (*size > *capacity) {
        free(*data);
        *data = malloc(*size);
        *capacity = *data ? *size : 0;
        if (!*data) {
            close(fd);
            return -1;
        }
    }
    size_t done = 0;
    while (done < *size) {
        ssize_t n = read(fd, *data + done, *size - done);
        if (n <= 0) {
            close(fd);
            return -1;
        }
        done += (size_t)n;
    }
    close(fd);
    return 0;
}

static int writeDurably(const char* path, const void* data, size_t size)
{
    char temporary[4096];
    if (snprintf(temporary, sizeof temporary, "%s.part", path) >= (int)sizeof temporary)
        return -1;
    int fd = open(temporary, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0)
        return -1;
    const char* next = data;
    while (size > 0) {
        ssize_t n = write(fd, next, size);
        if (n <= 0) {
            close(fd);
            unlink(temporary);
            return -1;
        }
        next += n;
        size -= (size_t)n;
    }
    if (fdatasync(fd) != 0 || close(fd) != 0 || rename(temporary, path) != 0) {
        unlink(temporary);
        return -1;
    }
    return 0;
}

static int byName(const void* a, const void* b)
{
    return strcmp(*(const char* const*)a, *(const char* const*)b);
}

long ctg_floor_run(const char* sessionDir, const char* tmPath)
{
    unsigned char* marks = NULL;
    size_t markCapacity = 0;
    size_t markBytes = 0;
    if (readAll(tmPath, &marks, &markCapacity, &markBytes) != 0)
        return -1;
    const size_t markCount = markBytes / 16;
    double* gpsMark = malloc(markCount * sizeof(double));
    double* ctMark = malloc(markCount * sizeof(double));
    for (size_t i = 0; i < markCount; ++i) {
        memcpy(&gpsMark[i], marks + 16 * i, 8);
        memcpy(&ctMark[i], marks + 16 * i + 8, 8);
    }
    free(marks);

    char raw[4096];
    snprintf(raw, sizeof raw, "%s/raw", sessionDir);
    DIR* dir = opendir(raw);
    if (!dir)
        return -1;
    char** names = NULL;
    size_t count = 0;
    size_t capacity = 0;
    for (struct dirent* entry; (entry = readdir(dir));) {
        const size_t length = strlen(entry->d_name);
        if (length < 4 || strcmp(entry->d_name + length - 3, ".ct") != 0)
            continue;
        if (count == capacity) {
            capacity = capacity ? 2 * capacity : 64;
            names = realloc(names, capacity * sizeof *names);
        }
        names[count++] = strdup(entry->d_name);
    }
    closedir(dir);
    qsort(names, count, sizeof *names, byName);

    /* The buffers are kept from file to file. */
    unsigned char* ct = NULL;
    size_t ctCapacity = 0;
    double* gps = NULL;
    size_t gpsCapacity = 0;
    long lines = 0;
    for (size_t f = 0; f < count && lines >= 0; ++f) {
        char ctPath[4096];
        char ctgPath[4096];
        if (snprintf(ctPath, sizeof ctPath, "%s/%s", raw, names[f]) >= (int)sizeof ctPath - 1) {
            lines = -1;
            break;
        }
        memcpy(ctgPath, ctPath, strlen(ctPath));
        strcpy(ctgPath + strlen(ctPath), "g");
        size_t ctBytes = 0;
        if (readAll(ctPath, &ct, &ctCapacity, &ctBytes) != 0 || ctBytes < 16) {
            lines = -1;
            break;
        }
        uint32_t header = 0;
        uint64_t n = 0;
        memcpy(&header, ct + 4, 4);
        memcpy(&n, ct + 8, 8);
        if (n > gpsCapacity) {
            free(gps);
            gps = malloc(n * sizeof(double));
            gpsCapacity = n;
        }
        size_t i = 0;
        for (uint64_t k = 0; k < n; ++k) {
            double value;
            memcpy(&value, ct + header + 8 * k, 8);
            while (i + 2 < markCount && ctMark[i + 1] <= value)
                ++i;
            gps[k] = gpsMark[i] + (value - ctMark[i]) * (gpsMark[i + 1] - gpsMark[i]) / (ctMark[i + 1] - ctMark[i]);
        }
        if (writeDurably(ctgPath, gps, n * sizeof(double)) != 0)
            lines = -1;
        else
            lines += (long)n;
    }
    free(gps);
    free(ct);
    for (size_t f = 0; f < count; ++f)
        free(names[f]);
    free(names);
    free(gpsMark);
    free(ctMark);
    return lines;
}

#ifdef CTG_FLOOR_MAIN
int main(int argc, char** argv)
{
    if (argc != 3) {
        fprintf(stderr, "usage: ctg_floor <session-dir> <tm-file>\n");
        return 2;
    }
    const long lines = ctg_floor_run(argv[1], argv[2]);
    if (lines < 0) {
        perror("ctg_floor");
        return 1;
    }
    printf("%ld scan lines\n", lines);
    return 0;
}
#endif
