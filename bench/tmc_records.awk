# The benchmarks' recording: N distinct 85-byte "$TMC" records, one every
# 100 ms of recording time.  awk -v n=N -f bench/tmc_records.awk > events
BEGIN {
  t = 1416131460
  for (i = 0; i < n; i++) {
    s = t + int(i / 10)
    printf "%d.%d $TMC timeStamp=%d LTN=1 SID=34 PID=53761 tmcData=0A:1F:%02X:%02X:00\n", s, i % 10, s, int(i / 256) % 256, i % 256
  }
}
