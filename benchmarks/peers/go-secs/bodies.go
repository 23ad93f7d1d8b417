package main

import (
	"fmt"
	"strings"

	"github.com/arloliu/go-secs/v2/secs2"
)

// workload is one body of the codec race and how it is built from plain values.
type workload struct {
	name  string
	build func() secs2.Item
}

var (
	someBytes = []byte{0x00, 0x7f, 0x80, 0xff}
	numbers   = make([]uint32, 10000)
	bigArray  = make([]uint32, 1000000)
	leaves    = make([]string, 101)
	text      string
)

func prepareValues() {
	for i := range numbers {
		numbers[i] = uint32(i) * 429496
	}
	for i := range bigArray {
		bigArray[i] = uint32(i * 4294)
	}
	for i := range leaves {
		leaves[i] = fmt.Sprintf("LEAF%04d", i)
	}
	text = strings.Repeat("ABCDEFGHIJKLMNOPQRSTUVWXYZ", 1<<20/26+1)[:1<<20]
}

func report(id uint32, lot string) secs2.Item {
	return secs2.L(
		secs2.U4(id),
		secs2.L(
			secs2.A(lot),
			secs2.U4(uint32(4000000001)),
			secs2.F8(1234.5678),
			secs2.I2(int16(-12345)),
			secs2.BOOLEAN(true),
			secs2.B(someBytes),
			secs2.A("CHAMBER1"),
			secs2.U1(uint8(200)),
		),
	)
}

func event() secs2.Item {
	return secs2.L(
		secs2.U4(uint32(1001)),
		secs2.U4(uint32(2002)),
		secs2.L(report(3001, "LOT-2026-0101-000001"), report(3002, "LOT-2026-0101-000002")),
	)
}

func listOfNumbers() secs2.Item {
	items := make([]secs2.Item, len(numbers))
	for i, number := range numbers {
		items[i] = secs2.U4(number)
	}
	return secs2.L(items...)
}

func nested() secs2.Item {
	body := secs2.L(secs2.A(leaves[98]), secs2.A(leaves[99]), secs2.A(leaves[100]))
	for depth := 48; depth >= 0; depth-- {
		body = secs2.L(secs2.A(leaves[2*depth]), secs2.A(leaves[2*depth+1]), body)
	}
	return body
}

var workloads = []workload{
	{"w1a", event},
	{"w1b", listOfNumbers},
	{"w1c", func() secs2.Item { return secs2.U4(bigArray) }},
	{"w1d", func() secs2.Item { return secs2.A(text) }},
	{"w1e", nested},
}
